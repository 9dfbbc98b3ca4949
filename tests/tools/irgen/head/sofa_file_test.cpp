#include "sofa_file.h"

#include <gtest/gtest.h>
#include <mysofa.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tools/irgen/heads/synthetic_head.h"

namespace {

using namespace sonivex_irgen;

std::string reasonAgainst(const std::string& path) {
    try {
        readSofaFile(path);
        return "";
    } catch (const UnusableHead& reason) {
        return reason.what();
    }
}

class IrgenSofaFile : public testing::Test {
  protected:
    void SetUp() override { std::filesystem::create_directory(folder_); }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    std::string write(const std::string& bytes) const {
        std::ofstream(folder_ / "x.sofa", std::ios::binary) << bytes;
        return (folder_ / "x.sofa").string();
    }

    static std::string packagedBytes() {
        std::ifstream file(SONIVEX_DEFAULT_SOFA, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    }

    const std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / ("sonivex-sofa-" + std::to_string(getpid()));
};

TEST_F(IrgenSofaFile, PackagedFileHas710DirectionsOf512SamplesAt44100Hz) {
    SONIVEX_NEED_PACKAGED_HEAD();
    const HeadMeasurements& head = *irgen_test::packagedHead();
    EXPECT_EQ(head.directions.size(), 710U);
    EXPECT_EQ(head.directions[0].ears[0].size(), 512U);
    EXPECT_EQ(head.rate_hz, 44100.0);
    for (const HeadMeasurement& measured : head.directions)
        ASSERT_NEAR(length(measured.direction), 1.0, 1e-12);
}

TEST_F(IrgenSofaFile, ReportsTheSystemsReasonForAMissingFile) {
    EXPECT_EQ(reasonAgainst((folder_ / "none.sofa").string()),
              "cannot be read as a SOFA file: No such file or directory");
}

TEST_F(IrgenSofaFile, RejectsTextFiles) {
    EXPECT_EQ(reasonAgainst(write("not a SOFA file")), "cannot be read as a SOFA file: invalid format");
    EXPECT_NE(reasonAgainst(write("")).find("cannot be read as a SOFA file"), std::string::npos);
}

TEST_F(IrgenSofaFile, RejectsATruncatedFile) {
    SONIVEX_NEED_PACKAGED_HEAD();
    const std::string bytes = packagedBytes();
    for (const std::size_t size : {bytes.size() / 2, bytes.size() - 1000}) {
        EXPECT_NE(reasonAgainst(write(bytes.substr(0, size))).find("cannot be read as a SOFA file"),
                  std::string::npos)
            << size;
    }
}

TEST_F(IrgenSofaFile, RejectsAnotherConvention) {
    SONIVEX_NEED_PACKAGED_HEAD();
    std::string bytes = packagedBytes();
    const std::string convention = "SimpleFreeFieldHRIR";
    const std::size_t at = bytes.find(convention);
    ASSERT_NE(at, std::string::npos);
    bytes.replace(at, convention.size(), "SingleRoomDRIR_____");
    EXPECT_NE(reasonAgainst(write(bytes)).find("not a file of free-field head responses"), std::string::npos);
}

// A record as libmysofa fills it, with two directions and responses of three samples.
class IrgenSofaRecord : public testing::Test {
  protected:
    MYSOFA_HRTF record() {
        MYSOFA_HRTF hrtf{};
        hrtf.I = 1;
        hrtf.C = 3;
        hrtf.R = 2;
        hrtf.E = 1;
        hrtf.N = 3;
        hrtf.M = 2;
        hrtf.ReceiverPosition = {receivers_, 6, nullptr};
        hrtf.SourcePosition = {sources_, 6, nullptr};
        hrtf.DataIR = {responses_, 12, nullptr};
        hrtf.DataSamplingRate = {&rate_, 1, nullptr};
        hrtf.DataDelay = {delays_, 4, nullptr};
        return hrtf;
    }

    float receivers_[6] = {0.0F, 0.09F, 0.0F, 0.0F, -0.09F, 0.0F};
    float sources_[6] = {0.0F, 2.0F, 0.0F, 3.0F, 0.0F, 4.0F};
    float responses_[12] = {1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12};
    float rate_ = 48000.0F;
    float delays_[4] = {0.5F, 1.5F, 2.5F, 3.5F};
};

TEST_F(IrgenSofaRecord, IsReadByDirectionAndEar) {
    const HeadMeasurements head = measurementsIn(record());
    ASSERT_EQ(head.directions.size(), 2U);
    EXPECT_EQ(head.rate_hz, 48000.0);
    EXPECT_NEAR(head.directions[0].direction.y, 1.0, 1e-9);
    EXPECT_NEAR(head.directions[1].direction.x, 0.6, 1e-9);
    EXPECT_NEAR(head.directions[1].direction.z, 0.8, 1e-9);
    EXPECT_EQ(head.directions[0].ears[1], (std::vector<double>{4, 5, 6}));
    EXPECT_EQ(head.directions[1].ears[0], (std::vector<double>{7, 8, 9}));
    EXPECT_EQ(head.directions[1].delays_samples[1], 3.5);
}

TEST_F(IrgenSofaRecord, ReceiverOnThePositiveSideIsTheLeftEar) {
    receivers_[1] = -0.09F;
    receivers_[4] = 0.09F;
    const HeadMeasurements head = measurementsIn(record());
    EXPECT_EQ(head.directions[0].ears[0], (std::vector<double>{4, 5, 6}));
    EXPECT_EQ(head.directions[0].delays_samples[0], 1.5);
}

TEST_F(IrgenSofaRecord, DelaysMayBeSharedByAllDirectionsOrAbsent) {
    MYSOFA_HRTF hrtf = record();
    hrtf.DataDelay.elements = 2;
    EXPECT_EQ(measurementsIn(hrtf).directions[1].delays_samples[1], 1.5);
    hrtf.DataDelay = {};
    EXPECT_EQ(measurementsIn(hrtf).directions[1].delays_samples[1], 0.0);
}

TEST_F(IrgenSofaRecord, IsRejectedWhenItIsInconsistent) {
    const auto refuses = [this](auto change) {
        MYSOFA_HRTF hrtf = record();
        change(hrtf);
        EXPECT_THROW(measurementsIn(hrtf), UnusableHead);
    };
    refuses([](MYSOFA_HRTF& hrtf) { hrtf.R = 1; });
    refuses([](MYSOFA_HRTF& hrtf) { hrtf.R = 4; });
    refuses([](MYSOFA_HRTF& hrtf) { hrtf.N = 4; });
    refuses([](MYSOFA_HRTF& hrtf) { hrtf.DataIR.values = nullptr; });
    refuses([](MYSOFA_HRTF& hrtf) { hrtf.SourcePosition.elements = 3; });
    refuses([](MYSOFA_HRTF& hrtf) { hrtf.DataDelay.elements = 3; });
    refuses([](MYSOFA_HRTF& hrtf) { hrtf.DataSamplingRate.elements = 0; });
    refuses([](MYSOFA_HRTF& hrtf) { hrtf.ReceiverPosition.elements = 3; });
    refuses([](MYSOFA_HRTF& hrtf) { hrtf.ReceiverPosition.values[4] = hrtf.ReceiverPosition.values[1]; });
}

TEST_F(IrgenSofaRecord, SourceAtTheCentreOfTheHeadIsRejected) {
    sources_[1] = 0.0F;
    EXPECT_THROW(measurementsIn(record()), UnusableHead);
    sources_[1] = NAN;
    EXPECT_THROW(measurementsIn(record()), UnusableHead);
}

}  // namespace
