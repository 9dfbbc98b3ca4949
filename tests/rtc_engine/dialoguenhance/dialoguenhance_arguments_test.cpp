// The dialogue enhancer's response to invalid and extreme arguments.
#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <climits>
#include <limits>
#include <memory>

#include "support/effects/dialogue_effect.h"
#include "support/logs/effect_log_capture.h"
#include "support/memory/guarded_block.h"
#include "support/signals/signal_matchers.h"

namespace {

using test::DialogueEffect;
using test::GuardedBlock;
using test::Pcm;
using test::sameSignal;

int process(void* handle, const short* in, short* out, int frames) {
    return aem_ProcessDialoguEnhance(handle, in, out, frames, 48000);
}

TEST(DialogueArguments, ANullHandleIsLoggedAndRejected) {
    const test::EffectLogCapture log;
    const Pcm in(8, 1);
    GuardedBlock out(8);
    EXPECT_EQ(process(nullptr, in.data(), out.data(), 4), -1);
    EXPECT_TRUE(out.isUntouched());
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0],
              "[ZubrelAem]: (dialoguenhance: 694) [audio]::kv dialoguenhance handle is NULL.\n");
}

TEST(DialogueArguments, ReleasingANullHandleIsLogged) {
    const test::EffectLogCapture log;
    aem_ReleaseDialoguEnhance(nullptr);
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0],
              "[ZubrelAem]: (dialoguenhance: 758) [audio]::kv dialoguenhance handle is NULL.\n");
}

TEST(DialogueArguments, NullBuffersAreRejected) {
    const DialogueEffect dialogue;
    const Pcm in(8, 1);
    GuardedBlock out(8);
    EXPECT_EQ(process(dialogue.handle(), nullptr, out.data(), 4), -1);
    EXPECT_TRUE(out.isUntouched());
    EXPECT_EQ(process(dialogue.handle(), in.data(), nullptr, 4), -1);
    EXPECT_EQ(process(dialogue.handle(), nullptr, nullptr, 0), -1);
}

TEST(DialogueArguments, CallsWithoutFramesDoNothing) {
    const DialogueEffect dialogue;
    const short in = 1;
    GuardedBlock out(1);
    EXPECT_EQ(process(dialogue.handle(), &in, out.data(), 0), 0);
    EXPECT_EQ(process(dialogue.handle(), &in, out.data(), -5), -10);
    EXPECT_EQ(process(dialogue.handle(), &in, out.data(), INT_MIN / 2), INT_MIN);
    EXPECT_TRUE(out.isUntouched());
}

TEST(DialogueArguments, SampleCountsBeyondAnIntAreRejected) {
    const DialogueEffect dialogue;
    const short in = 1;
    GuardedBlock out(1);
    for (const int frames : {INT_MAX / 2 + 1, INT_MAX, INT_MIN / 2 - 1, INT_MIN}) {
        EXPECT_EQ(process(dialogue.handle(), &in, out.data(), frames), -1) << frames;
    }
    EXPECT_TRUE(out.isUntouched());
}

TEST(DialogueArguments, RejectedCallsLeaveTheQueuesUnchanged) {
    const Pcm in = test::bursts(6, 2 * 20000);
    const Pcm expected = DialogueEffect().processInCallsOf(400, in);

    DialogueEffect dialogue;
    Pcm out;
    for (std::size_t done = 0; done < in.size(); done += 800) {
        GuardedBlock unused(1);
        for (const int frames : {0, -100, INT_MAX, INT_MIN}) {
            process(dialogue.handle(), in.data(), unused.data(), frames);
        }
        process(dialogue.handle(), nullptr, unused.data(), 400);
        process(dialogue.handle(), in.data(), nullptr, 400);
        EXPECT_TRUE(unused.isUntouched());
        const auto first = in.begin() + static_cast<std::ptrdiff_t>(done);
        test::append(out, dialogue.process(Pcm(first, first + 800)));
    }
    EXPECT_TRUE(sameSignal(out, expected));
}

TEST(DialogueArguments, NothingOutsideTheOutputIsWritten) {
    for (const int rate_hz : {48000, 96000, 192000}) {
        const DialogueEffect dialogue({.rate_hz = rate_hz});
        for (const int frames : {1, 511, 512, 513, 4100, 100000}) {
            const auto samples = 2 * static_cast<std::size_t>(frames);
            // The input has exactly the memory it needs, so that a sanitizer reports every read beyond it.
            const auto in = std::make_unique<short[]>(samples);
            std::fill_n(in.get(), samples, short{-3000});
            GuardedBlock out(samples);
            EXPECT_EQ(process(dialogue.handle(), in.get(), out.data(), frames), static_cast<int>(samples));
            EXPECT_TRUE(out.guardsAreWhole()) << rate_hz << " Hz, " << frames << " frames";
            EXPECT_EQ(std::count(in.get(), in.get() + samples, -3000), static_cast<std::ptrdiff_t>(samples));
        }
    }
}

TEST(DialogueArguments, TheRateOfACallIsIgnored) {
    const Pcm in = test::noise(1, 2 * 4096, 9000);
    const Pcm expected = DialogueEffect().process(in);
    for (const int rate_hz : {INT_MIN, 0, 192000, INT_MAX}) {
        const DialogueEffect dialogue;
        Pcm out(in.size());
        EXPECT_EQ(aem_ProcessDialoguEnhance(dialogue.handle(), in.data(), out.data(), 4096, rate_hz),
                  2 * 4096);
        EXPECT_TRUE(sameSignal(out, expected));
    }
}

TEST(DialogueArguments, CreationAcceptsAnyChannelCount) {
    const Pcm in = test::noise(1, 2 * 4096, 9000);
    const Pcm expected = DialogueEffect().process(in);
    for (const int channels : {INT_MIN, -1, 0, 1, 3, INT_MAX}) {
        EXPECT_TRUE(sameSignal(DialogueEffect({.channels = channels}).process(in), expected)) << channels;
    }
}

TEST(DialogueArguments, CreationRejectsNumbersThatAreNotFiniteAsFloats) {
    testing::internal::CaptureStdout();
    for (const double number :
         {std::numeric_limits<double>::infinity(), -std::numeric_limits<double>::infinity(),
          std::numeric_limits<double>::quiet_NaN(), 1e39, -1e300}) {
        EXPECT_EQ(aem_CreateDialoguEnhance(2, 48000, number, 1, 1), nullptr) << number;
        EXPECT_EQ(aem_CreateDialoguEnhance(2, 48000, 1, number, 1), nullptr) << number;
        EXPECT_EQ(aem_CreateDialoguEnhance(2, 48000, 1, 1, number), nullptr) << number;
    }
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

// Infinite products and the NaNs from their differences become silence or the ceiling. They do not reach the
// stored input.
TEST(DialogueArguments, HugeFiniteNumbersDoNoHarm) {
    const Pcm in = test::bursts(2, 2 * 16 * 512);
    for (const double huge : {1e30, -1e30, static_cast<double>(FLT_MAX), -static_cast<double>(FLT_MAX)}) {
        for (const auto& settings :
             {test::DialogueSettings{.gain_floor = huge}, test::DialogueSettings{.gain_scale = huge},
              test::DialogueSettings{.voice_level = huge}}) {
            const Pcm out = DialogueEffect(settings).processInCallsOf(512, in);
            const auto [lowest, highest] = std::minmax_element(out.begin(), out.end());
            EXPECT_GE(*lowest, -32440);
            EXPECT_LE(*highest, 32440);
        }
    }
}

TEST(DialogueArguments, TinyNumbersAreAccepted) {
    DialogueEffect dialogue({.gain_floor = 1e-300, .gain_scale = -1e-45, .voice_level = 1e-40});
    const Pcm out = dialogue.processInCallsOf(512, test::noise(1, 2 * 4096, 9000));
    EXPECT_EQ(std::count(out.begin(), out.end(), 0), static_cast<std::ptrdiff_t>(out.size()));
}

}  // namespace
