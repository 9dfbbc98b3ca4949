#include "conversion_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "failure.h"
#include "tools/sonivex/audio_samples.h"

namespace {

using namespace sonivex_tool;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const Effect* const kNormalizer = findEffect("normalizer");
const Effect* const kSurround = findEffect("surround");
const Effect* const kDialogue = findEffect("dialogue");

AudioSpec audio(const std::string& layout, int rate_hz) {
    AudioSpec spec = test::floatSpec(1, rate_hz);
    EXPECT_EQ(av_channel_layout_from_string(&spec.layout, layout.c_str()), 0) << layout;
    return spec;
}

AudioSpec unnamed(int channels) {
    AudioSpec spec = test::floatSpec(1);
    spec.layout = {};
    spec.layout.nb_channels = channels;
    return spec;
}

// Returns the exit code and the message with which a plan is refused.
std::pair<ExitCode, std::string> refusal(const AudioSpec& input, const std::vector<const Effect*>& chain,
                                         const ConversionSettings& settings = {}) {
    try {
        planConversion(input, chain, settings);
    } catch (const Failure& failure) {
        return {failure.exitCode(), failure.what()};
    }
    return {ExitCode::Success, ""};
}

TEST(ConversionPlan, ConvertsNothingThatTheEffectsTake) {
    for (const char* layout : {"mono", "stereo", "5.1", "5.1(side)", "7.1"}) {
        const ConversionPlan plan = planConversion(audio(layout, 44100), {kSurround}, {.strict = true});
        EXPECT_THAT(plan.notes, IsEmpty()) << layout;
        EXPECT_FALSE(plan.isPadded());
        EXPECT_EQ(plan.work.rate_hz, 44100);
        EXPECT_EQ(plan.work.format, AV_SAMPLE_FMT_S16);
    }
}

TEST(ConversionPlan, SaysWhatItConverts) {
    const ConversionPlan plan = planConversion(audio("6.1", 96000), {kSurround}, {});
    EXPECT_EQ(layoutName(plan.work.layout), "7.1");
    EXPECT_EQ(plan.work.rate_hz, 48000);
    EXPECT_THAT(plan.notes,
                ElementsAre("IN has 6.1; surround gets 7.1", "IN has 96000 Hz; surround gets 48000 Hz"));
    EXPECT_THAT(planConversion(audio("mono", 16000), {kNormalizer, kDialogue}, {}).notes,
                ElementsAre("IN has mono; the normalizer and dialogue enhancement get stereo",
                            "IN has 16000 Hz; the normalizer and dialogue enhancement get 48000 Hz"));
}

TEST(ConversionPlan, GivesTheNormalizerSilentChannelsAndTakesThemAway) {
    const ConversionPlan plan = planConversion(audio("2.1", 48000), {kNormalizer}, {});
    EXPECT_TRUE(plan.isPadded());
    EXPECT_EQ(plan.work.channels(), 6);
    EXPECT_EQ(layoutName(plan.restoredSpec(plan.work).layout), "2.1");
    EXPECT_THAT(plan.notes,
                ElementsAre("the normalizer gets the 3 channels of 2.1 beside 3 silent ones, which OUT "
                            "does not have"));
    FramePtr frame = makeFrame(plan.work, 2);
    auto* samples = reinterpret_cast<int16_t*>(frame->data[0]);
    for (int i = 0; i < 12; ++i) samples[i] = static_cast<int16_t>(i);
    frame = plan.restored(std::move(frame));
    EXPECT_TRUE(specOf(*frame) == plan.restoredSpec(plan.work));
    const auto* restored = reinterpret_cast<const int16_t*>(frame->data[0]);
    EXPECT_THAT(std::vector<int>(restored, restored + 6), ElementsAre(0, 1, 2, 6, 7, 8));
}

TEST(ConversionPlan, FollowsTheRateAndLayoutOfTheSettings) {
    const ConversionPlan plan = planConversion(audio("5.1", 48000), {kNormalizer},
                                               {.rate_hz = 44100, .layout = "stereo", .strict = true});
    EXPECT_EQ(plan.work.rate_hz, 44100);
    EXPECT_EQ(layoutName(plan.work.layout), "stereo");
    EXPECT_EQ(plan.notes.size(), 2U);
    EXPECT_EQ(planConversion(audio("stereo", 44100), {kNormalizer}, {.layout = "3.0"}).converted.channels(),
              3);
}

TEST(ConversionPlan, RefusesARateOrLayoutThatTheEffectsDoNotTake) {
    EXPECT_EQ(refusal(audio("stereo", 48000), {kSurround}, {.rate_hz = 32000}),
              std::pair(ExitCode::UnsupportedAudio,
                        std::string("cannot render the audio: surround supports 44100 or "
                                    "48000 Hz, not 32000")));
    EXPECT_EQ(refusal(audio("stereo", 48000), {kSurround}, {.layout = "4.0"}).first,
              ExitCode::UnsupportedAudio);
    EXPECT_EQ(refusal(audio("stereo", 48000), {kDialogue}, {.layout = "5.1"}).first,
              ExitCode::UnsupportedAudio);
    for (const char* name : {"six", "", "0", "300c", "ambisonic 1"}) {
        SCOPED_TRACE(name);
        const auto [code, line] = refusal(audio("stereo", 48000), {kSurround}, {.layout = name});
        EXPECT_EQ(code, ExitCode::Usage);
        EXPECT_THAT(line, HasSubstr("--layout must name loudspeakers"));
    }
}

TEST(ConversionPlan, RefusesEveryChangeThatStrictForbids) {
    EXPECT_EQ(refusal(audio("2.1", 48000), {kNormalizer}, {.strict = true}),
              std::pair(ExitCode::UnsupportedAudio,
                        std::string("cannot render the audio: the normalizer supports 1, "
                                    "2, 6 or 8 channels, not 3")));
    EXPECT_EQ(
        refusal(audio("stereo", 96000), {kNormalizer}, {.strict = true}),
        std::pair(ExitCode::UnsupportedAudio, std::string("cannot render the audio: the normalizer supports "
                                                          "16000, 44100 or 48000 Hz, not 96000")));
    EXPECT_EQ(
        refusal(audio("hexagonal", 48000), {kSurround}, {.strict = true}),
        std::pair(ExitCode::UnsupportedAudio,
                  std::string("cannot render the audio: surround supports mono, stereo, 5.1 or 7.1, not "
                              "hexagonal")));
}

TEST(ConversionPlan, RefusesChannelsWithoutNamesThatItWouldHaveToMix) {
    const auto [code, line] = refusal(unnamed(300), {kNormalizer});
    EXPECT_EQ(code, ExitCode::UnsupportedAudio);
    EXPECT_THAT(line, HasSubstr("300 channels"));
    EXPECT_EQ(refusal(unnamed(9), {kSurround}, {.layout = "stereo"}).first, ExitCode::UnsupportedAudio);
}

}  // namespace
