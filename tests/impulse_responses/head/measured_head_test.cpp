// The measured head of the committed tables has the interaural differences that are known of it. This proves
// the measures and the reading of the file on a head whose figures were calculated independently.
#include <gtest/gtest.h>

#include <array>
#include <stdexcept>

#include "interaural.h"
#include "reference_head.h"
#include "sofa_head.h"

namespace response_quality {
namespace {

constexpr std::array kOctaves_hz{125.0, 250.0, 500.0};

struct Known {
    double azimuth_deg;
    double delay_us;                                   // below 1.5 kHz
    std::array<double, kOctaves_hz.size()> levels_db;  // in these octaves
};
constexpr Known kKnown[] = {{30.0, 331.0, {1.1, 2.0, 3.7}},
                            {90.0, 721.0, {2.0, 3.5, 5.5}},
                            {110.0, 688.0, {1.7, 3.3, 5.9}},
                            {140.0, 417.0, {1.3, 2.5, 5.8}}};

class DefaultHead : public testing::Test {
  protected:
    void SetUp() override {
        if (!referenceHead().is_default) GTEST_SKIP() << "the tables were made from another head";
    }

    static const MeasuredHead& head() { return *referenceHead().measured; }
};

TEST_F(DefaultHead, DelaysTheFarEarAsMuchAsIsKnown) {
    const double grid_us = 1e6 / (8.0 * head().rate_hz);
    for (const Known& known : kKnown) {
        EXPECT_NEAR(lowFrequencyDelay_us(head().nearest(known.azimuth_deg), head().rate_hz), known.delay_us,
                    grid_us);
        EXPECT_NEAR(lowFrequencyDelay_us(head().nearest(-known.azimuth_deg), head().rate_hz), -known.delay_us,
                    grid_us);
    }
}

TEST_F(DefaultHead, IsLouderAtTheNearEarByAsMuchAsIsKnown) {
    for (const Known& known : kKnown) {
        const Signal left_db =
            octaveDifferences_db(head().nearest(known.azimuth_deg), kOctaves_hz, head().rate_hz);
        const Signal right_db =
            octaveDifferences_db(head().nearest(-known.azimuth_deg), kOctaves_hz, head().rate_hz);
        for (std::size_t i = 0; i < kOctaves_hz.size(); ++i) {
            // The known levels are rounded to 0.1 dB.
            EXPECT_NEAR((left_db[i] - right_db[i]) / 2.0, known.levels_db[i], 0.06)
                << known.azimuth_deg << " degrees, " << kOctaves_hz[i] << " Hz";
        }
    }
}

TEST(MeasuredHead, OfAFileThatCannotBeReadIsRefused) {
    EXPECT_THROW(readMeasuredHead("no-such-file.sofa"), std::runtime_error);
    EXPECT_THROW(readMeasuredHead(__FILE__), std::runtime_error);
}

}  // namespace
}  // namespace response_quality
