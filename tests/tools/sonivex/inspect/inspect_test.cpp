#include "inspect.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <limits>
#include <nlohmann/json.hpp>

#include "failure.h"
#include "inspect_report.h"
#include "support/processes/temporary_folder.h"
#include "support/signals/signals.h"
#include "support/signals/wav_file.h"

namespace {

using namespace sonivex_tool;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kInput[] = "sonivex_dialoguenhance_input_12345678.pcm";
constexpr char kOutput[] = "sonivex_dialoguenhance_output_12345678.pcm";

std::string noiseBytes(size_t bytes) {
    const test::Pcm noise = test::noise(1, static_cast<int>(bytes / 2 + 1), 3000);
    return std::string(reinterpret_cast<const char*>(noise.data()), bytes);
}

class Inspect : public testing::Test {
  protected:
    std::string written(const std::string& name, const std::string& content) const {
        test::writeFile(folder_.file(name), content);
        return folder_.file(name);
    }

    static InspectReport inspected(const std::vector<std::string>& files,
                                   const std::vector<int>& channels = {}) {
        return inspect({files, std::nullopt, {channels, std::nullopt}});
    }

    static void expectFailure(const InspectRequest& request, ExitCode exit_code, const std::string& part) {
        try {
            inspect(request);
            FAIL() << "no failure: " << part;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.exitCode(), exit_code);
            EXPECT_THAT(failure.what(), HasSubstr(part));
        }
    }

    test::TemporaryFolder folder_;
};

TEST_F(Inspect, ComparesTheFilesOfASessionForAnySpellingOfTheirFolder) {
    const std::string input = written(kInput, noiseBytes(4 * 4096));
    written(kOutput, noiseBytes(4 * 4096));
    const std::string name = std::filesystem::path(folder_.path()).filename();
    for (const std::string& way : {std::string("/"), std::string("//"), "/../" + name + "/./"})
        EXPECT_EQ(inspected({input, folder_.path() + way + kOutput}).pairs.size(), 1U) << way;
}

TEST_F(Inspect, DoesNotCompareFilesOfDifferentSessionsOrFolders) {
    const test::TemporaryFolder other;
    test::writeFile(other.file(kOutput), noiseBytes(4 * 4096));
    const std::string input = written(kInput, noiseBytes(4 * 4096));
    written(kOutput, noiseBytes(4 * 4096));
    const std::string later = written("sonivex_dialoguenhance_output_12345679.pcm", noiseBytes(4 * 4096));
    EXPECT_THAT(inspected({input, later, other.file(kOutput)}).pairs, IsEmpty());
}

TEST_F(Inspect, ReadsTheWholeFramesOfATruncatedDump) {
    const auto report = inspected({written(kInput, noiseBytes(4 * 1000 + 3))});
    EXPECT_EQ(report.files.at(0).levels.frames, 1000);
    EXPECT_THAT(report.files[0].notes, ElementsAre(HasSubstr("trailing bytes ignored: 3")));
    EXPECT_THAT(asText(report), HasSubstr("trailing bytes ignored: 3\n"));
    EXPECT_EQ(nlohmann::json::parse(asJson(report))["files"][0]["notes"].size(), 1U);
    // A channel count from the user makes the file as well known as its name does.
    const std::string normalized = written("sonivex_normalizer_input_12345678.pcm", noiseBytes(12 * 10 + 7));
    EXPECT_EQ(inspected({normalized}, {6}).files.at(0).levels.frames, 10);
    EXPECT_THAT(inspected({written(kInput, noiseBytes(4 * 1000))}).files.at(0).notes, IsEmpty());
}

TEST_F(Inspect, RefusesAPartialFrameThatMayMeanAnotherChannelCount) {
    const std::string normalized = written("sonivex_normalizer_input_12345678.pcm", noiseBytes(4 * 10 + 2));
    expectFailure({{normalized}, {}, {}}, ExitCode::NoAudio, "2 channels of 16 bits); --channels sets");
    const std::string plain = written("plain.pcm", noiseBytes(5));
    expectFailure({{plain}, {}, {}}, ExitCode::NoAudio, "; --channels sets the channel count");
    expectFailure({{plain}, {}, {{1}, {}}}, ExitCode::NoAudio, "2-byte frames (1 channel of 16 bits)");
    try {
        inspected({plain}, {1});
    } catch (const Failure& failure) {
        EXPECT_THAT(failure.what(), testing::Not(HasSubstr("--channels")));
    }
    expectFailure({{written(kInput, noiseBytes(3))}, {}, {}}, ExitCode::NoAudio, "3 bytes");
}

TEST_F(Inspect, NamesTheFileWhoseLevelsCannotBeMeasured) {
    const std::vector<float> samples(100, 0.1F);
    for (const uint32_t rate_hz : {5U, 16U, 10000000U, 2147483647U}) {
        const std::string path = written("rate.wav", test::wavOf(samples, 1, rate_hz));
        expectFailure({{path}, {}, {}}, ExitCode::UnsupportedAudio,
                      "rate.wav\": its sample rate is " + std::to_string(rate_hz) + " Hz");
    }
    const std::string many = written("many.wav", test::wavOf(samples, 65, 48000));
    expectFailure({{many}, {}, {}}, ExitCode::UnsupportedAudio, "many.wav\": it has 65 channels");
    EXPECT_EQ(inspected({written("rate.wav", test::wavOf(samples, 1, 4000))}).files.at(0).levels.frames, 100);
}

TEST_F(Inspect, ReportsSamplesThatAreNotFinite) {
    for (const float bad :
         {std::numeric_limits<float>::quiet_NaN(), std::numeric_limits<float>::infinity()}) {
        std::vector<float> samples(4800, 0.1F);
        samples[7] = bad;
        const auto report = inspected({written("bad.wav", test::wavOf(samples, 1, 48000))});
        EXPECT_FALSE(report.files.at(0).levels.channels.at(0).is_finite);
        EXPECT_FALSE(report.files.at(0).levels.all.is_finite);
        EXPECT_THAT(asText(report), HasSubstr("FC         not finite"));
        const auto json = nlohmann::json::parse(asJson(report))["files"][0];
        EXPECT_EQ(json["levels"][0]["finite"], false);
        EXPECT_TRUE(json["all"]["sample_peak_dbfs"].is_null());
    }
}

TEST_F(Inspect, RefusesToCompareFilesOfDifferentSampleRates) {
    const std::vector<float> samples(4800, 0.1F);
    const std::string slow = written("slow.wav", test::wavOf(samples, 1, 44100));
    const std::string fast = written("fast.wav", test::wavOf(samples, 1, 48000));
    expectFailure({{}, std::pair(slow, fast), {}}, ExitCode::UnsupportedAudio,
                  "cannot compare \"" + fast + "\" with \"" + slow +
                      "\": their sample rates are 48000 Hz and 44100 Hz");
}

TEST_F(Inspect, NumbersChannelsThatHaveNoPosition) {
    const std::vector<float> samples(20 * 4800, 0.1F);
    const std::string text = asText(inspected({written("many.wav", test::wavOf(samples, 20, 48000))}));
    EXPECT_THAT(text, HasSubstr("\n  1 "));
    EXPECT_THAT(text, HasSubstr("\n  20 "));
}

TEST_F(Inspect, RefusesAPipeAsOneSideOfAPair) {
    const std::string pipe = folder_.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string file = written(kInput, noiseBytes(4 * 1000));
    for (const auto& pair : {std::pair(pipe, file), std::pair(file, pipe)})
        expectFailure({{}, pair, {}}, ExitCode::InputNotReadable, "pipe\": it is not a regular file");
}

}  // namespace
