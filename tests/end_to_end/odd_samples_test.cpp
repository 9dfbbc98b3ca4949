// Samples that are no sound: above full scale, infinite, or not a number.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

class RenderOddSamples : public test::RenderTest {
  protected:
    std::string makeFloats(const std::string& expression, int rate_hz = 48000) {
        test::ffmpeg({"-f", "lavfi", "-i",
                      "aevalsrc=" + expression + ":s=" + std::to_string(rate_hz) + ":d=1", "-c:a",
                      "pcm_f32le", file("in.wav")});
        return file("in.wav");
    }
};

TEST_F(RenderOddSamples, SaysHowManySamplesAreAboveFullScale) {
    // A sine of twice full scale is above it for two thirds of the time.
    const std::string in = makeFloats("2*sin(2*PI*t*441.7)");
    const auto report = render({in, file("out.wav")});
    const auto samples = test::decode(in);
    const auto above =
        std::count_if(samples.begin(), samples.end(), [](float s) { return std::abs(s) > 1.0F; });
    ASSERT_GT(above, 30'000);
    EXPECT_THAT(report["notes"], ElementsAre(std::to_string(above) +
                                             " samples (67 %) above full scale clipped before the effect"));
}

TEST_F(RenderOddSamples, DoesNotRemarkOnFullScaleItself) {
    EXPECT_THAT(render({makeFloats("2*mod(n\\,2)-1"), file("out.wav")})["notes"], IsEmpty());
}

TEST_F(RenderOddSamples, ReplacesNanAndInfinityBySilence) {
    for (const int rate_hz : {48000, 96000}) {
        SCOPED_TRACE(rate_hz);
        const std::string in = makeFloats(
            "if(eq(n\\,1000)\\,NAN\\,if(eq(n\\,2000)\\,INFINITY\\,0.01*sin(2*PI*t*500)))", rate_hz);
        const auto decoded = test::decode(in);
        ASSERT_FALSE(std::isfinite(decoded.at(1000)));
        ASSERT_FALSE(std::isfinite(decoded.at(2000)));
        const auto report = render({in, file("out.wav"), "--force"});
        EXPECT_EQ(report["notes"].back(), "2 samples of IN are NaN or infinite; silence replaces them");
        EXPECT_NEAR(report["input"]["sample_peak_dbfs"].get<double>(), -40.0, 0.1);
        EXPECT_TRUE(report["input"]["integrated_lufs"].is_number());
        // All other samples keep their sound: the tone is 20 dB louder, less the 0.035 dB of the limiters.
        const auto samples = test::decode(file("out.wav"));
        EXPECT_EQ(samples.size(), 48000U);
        double energy = 0.0;
        for (const float sample : samples) energy += static_cast<double>(sample) * sample;
        EXPECT_NEAR(10.0 * std::log10(energy / 48000.0 / 0.005), -0.035, 0.01);
    }
}

}  // namespace
