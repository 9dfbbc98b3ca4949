#include "sonivex/surround.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "rejected_handle.h"
#include "rtc_engine/surround/core/convolve_reverb/convolve_reverb_inspector.h"
#include "support/effects/surround_record.h"
#include "support/logs/effect_log_capture.h"
#include "support/signals/signal_matchers.h"

namespace {

using test::Pcm;
using test::sameSignal;
using test::SurroundEffect;

constexpr const char* kChannelsMessage =
    "[KelvoSurround]::The input audio channel number is not supported\xEF\xBC\x81\n";

TEST(Surround, AHandleStoresItsCreationArguments) {
    const SurroundEffect surround(6, 13, 2, 0, 44100);
    const SurroundHandle& record = test::recordOf(surround);
    EXPECT_EQ(record.channels, 6);
    EXPECT_EQ(record.sampleRate, 44100);
    EXPECT_EQ(record.type, 13);
    EXPECT_EQ(record.mode, 2);
    EXPECT_EQ(record.limiter, 0);
    EXPECT_EQ(record.layout, &sonivex::kSurround51);
    EXPECT_NE(record.limiterState, nullptr);
    EXPECT_EQ(sonivex::fillLevel(*record.inRing), 0);
    EXPECT_EQ(sonivex::fillLevel(*record.outRing), 0);
}

TEST(Surround, StereoLoadsTheTwoChannelResponses) {
    SurroundEffect surround(2, 1, 0);
    ConvolveReverbInspector inspector(*test::recordOf(surround).reverb);
    EXPECT_EQ(inspector.layout(), &sonivex::kBingo2);
    EXPECT_EQ(inspector.responses()[0].size(), 13000U);
    for (std::size_t agent = 0; agent < 24; ++agent) EXPECT_EQ(inspector.isSetUp(agent), agent < 4);
    EXPECT_EQ(surround.process(Pcm(960, 50)).size(), 960U);
}

TEST(Surround, EveryTypeAndLayoutSetsUpItsAgents) {
    const auto initialised = [](int channels, int type) {
        const SurroundEffect surround(channels, type);
        ConvolveReverbInspector inspector(*test::recordOf(surround).reverb);
        EXPECT_EQ(inspector.channels(), channels);
        EXPECT_EQ(inspector.headBlockSize(), 256U);
        EXPECT_EQ(inspector.tailBlockSize(), 12768U);
        EXPECT_EQ(inspector.blockFrames(), 240U);
        EXPECT_EQ(inspector.hasAudioStage(), type == 13);
        int agents = 0;
        for (std::size_t agent = 0; agent < 24; ++agent) agents += inspector.isSetUp(agent) ? 1 : 0;
        return agents;
    };
    EXPECT_EQ(initialised(1, 1), 4);
    EXPECT_EQ(initialised(2, 1), 4);
    EXPECT_EQ(initialised(6, 1), 12);
    EXPECT_EQ(initialised(8, 1), 16);
    EXPECT_EQ(initialised(1, 13), 4 + 2);
    EXPECT_EQ(initialised(2, 13), 4 + 2);
    EXPECT_EQ(initialised(6, 13), 10 + 2);
    EXPECT_EQ(initialised(8, 13), 14 + 2);
}

TEST(Surround, MonoBehavesLikeStereo) {
    const Pcm in = test::bursts(1, 2 * 4800);
    for (const int type : {1, 13}) {
        SurroundEffect mono(1, type);
        SurroundEffect stereo(2, type);
        EXPECT_TRUE(sameSignal(mono.processInCallsOf(240, in), stereo.processInCallsOf(240, in)));
    }
}

TEST(Surround, UnsupportedChannelsAreLoggedAndReturnNull) {
    for (const int channels : {-1, 0, 3, 4, 5, 7, 9}) {
        const test::EffectLogCapture log;
        EXPECT_EQ(test::createRejected(channels, 1), nullptr);
        EXPECT_EQ(test::createRejected(channels, 13), nullptr);
        ASSERT_EQ(log.lines().size(), 2U);
        EXPECT_EQ(log.lines()[0], std::string("[ZubrelAem]: (surround: 145) ") + kChannelsMessage);
        EXPECT_EQ(log.lines()[1], std::string("[ZubrelAem]: (surround: 163) ") + kChannelsMessage);
    }
}

TEST(Surround, UnsupportedTypesAreLoggedAndReturnNull) {
    for (const int type : {-1, 0, 2, 12, 14}) {
        const test::EffectLogCapture log;
        EXPECT_EQ(test::createRejected(2, type), nullptr);
        EXPECT_EQ(test::createRejected(4, type), nullptr);
        ASSERT_EQ(log.lines().size(), 2U);
        EXPECT_EQ(log.lines()[0],
                  "[ZubrelAem]: (surround: 168) [KelvoSurround]::kv surround type is not supported.\n");
        EXPECT_EQ(log.lines()[1], log.lines()[0]);
    }
}

TEST(Surround, ReleasingANullHandleIsLogged) {
    const test::EffectLogCapture log;
    aem_ReleaseSurround(nullptr);
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0], "[ZubrelAem]: (surround: 732) [audio]::kv surround handle is NULL.\n");
}

TEST(Surround, TheModeAffectsOnlyType13) {
    const Pcm in = test::bursts(2, 2 * 2400);
    const auto output = [&](int type, int mode) {
        return SurroundEffect(2, type, mode).processInCallsOf(240, in);
    };
    EXPECT_NE(output(13, 1), output(13, 2));
    EXPECT_NE(output(13, 2), output(13, 3));
    for (const int mode : {0, 7, -1}) {
        EXPECT_TRUE(sameSignal(output(13, mode), output(13, 3))) << mode;
    }
    EXPECT_TRUE(sameSignal(output(1, 1), output(1, 2)));
}

TEST(Surround, KeepsSilenceSilent) {
    for (const int type : {1, 13}) {
        for (const int limiter : {0, 1}) {
            SurroundEffect surround(8, type, 1, limiter);
            EXPECT_TRUE(sameSignal(surround.processInCallsOf(240, Pcm(8 * 2400, 0)), Pcm(4800, 0)));
        }
    }
}

TEST(Surround, TheTailEndsAfterTheLongestResponse) {
    SurroundEffect surround(2, 1);
    Pcm in(2 * 14400, 0);
    in[0] = 20000;
    in[1] = 20000;
    const Pcm out = surround.processInCallsOf(240, in);
    EXPECT_EQ(std::count(out.begin() + 2 * 13000, out.end(), 0), 2 * 1400);
}

TEST(Surround, ALoudspeakerIsLouderAtItsOwnEar) {
    const auto energies = [](int channels, std::size_t channel, int type) {
        SurroundEffect surround(channels, type);
        const auto width = static_cast<std::size_t>(channels);
        Pcm in(width * 4800, 0);
        const Pcm sound = test::noise(3, 240, 8000);
        for (std::size_t i = 0; i < sound.size(); ++i) in[i * width + channel] = sound[i];
        const Pcm out = surround.processInCallsOf(240, in);
        std::pair<double, double> ears;
        for (std::size_t i = 0; i < out.size(); i += 2) {
            ears.first += out[i] * out[i];
            ears.second += out[i + 1] * out[i + 1];
        }
        return ears;
    };
    for (const int type : {1, 13}) {
        for (const std::size_t left : {0U, 4U, 6U}) {
            SCOPED_TRACE("type " + std::to_string(type) + ", channel " + std::to_string(left));
            const auto [near_left, far_right] = energies(8, left, type);
            EXPECT_GT(near_left, 2 * far_right);
            const auto [far_left, near_right] = energies(8, left + 1, type);
            EXPECT_GT(near_right, 2 * far_left);
        }
    }
}

TEST(Surround, TheLimiterKeepsItsCeilingAndTheClipReachesFullScale) {
    const Pcm in = test::square(8 * 9600, 8 * 300, 32767);
    SurroundEffect limited(8, 1, 0, 1);
    const Pcm out = limited.processInCallsOf(240, in);
    EXPECT_LE(*std::max_element(out.begin(), out.end()), 32440);
    EXPECT_GE(*std::min_element(out.begin(), out.end()), -32440);
    EXPECT_GT(*std::max_element(out.begin(), out.end()), 32000);
    for (const int limiter : {0, 2, -1}) {
        SurroundEffect clipped(8, 1, 0, limiter);
        const Pcm hard = clipped.processInCallsOf(240, in);
        EXPECT_EQ(*std::max_element(hard.begin(), hard.end()), 32767);
        EXPECT_EQ(*std::min_element(hard.begin(), hard.end()), -32768);
    }
}

TEST(Surround, HandlesAreIndependent) {
    const Pcm loud = test::bursts(4, 2 * 4800);
    const Pcm quiet = test::noise(5, 2 * 4800, 900);
    SurroundEffect alone(2, 1);
    const Pcm expected = alone.processInCallsOf(240, quiet);
    SurroundEffect first(2, 1);
    SurroundEffect second(2, 1);
    Pcm out;
    for (std::ptrdiff_t done = 0; done < 2 * 4800; done += 480) {
        first.process(Pcm(loud.begin() + done, loud.begin() + done + 480));
        test::append(out, second.process(Pcm(quiet.begin() + done, quiet.begin() + done + 480)));
    }
    EXPECT_TRUE(sameSignal(out, expected));
}

}  // namespace
