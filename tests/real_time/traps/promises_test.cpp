// The small functions of the filter and the framework whose headers promise real-time safety.
#include <gtest/gtest.h>

#include <string>
#include <utility>

extern "C" {
#include <libavutil/channel_layout.h>
}

#include "effects.h"
#include "filter/faults/filter_under_test.h"
#include "frame_checks.h"
#include "real_time/traps/real_time_section.h"
#include "spsc_queue.h"
#include "support/frames/audio_frames.h"
#include "vorlin/av_compat.h"
#include "vorlin/json_item.h"
#include "vorlin/log.h"
#include "vorlin/sample_format.h"
#include "vorlin/thread.h"

namespace {

using test::RealTimeSection;
using Vorlin::IQFFrame;

TEST(PromiseTraps, AskingTheFilterIsNotTrapped) {
    test::FilterUnderTest filter(test::Mode::kActive);
    filter.options(R"({"enable_surround": true})");
    const std::string name = "sonivex";
    const std::string other = "a name that is too long to lie inside a string";
    bool is_supported = false;
    Vorlin::FilterTiming timing;
    {
        const RealTimeSection section;
        is_supported = filter->is_supported(name, 0, 0, 0) && !filter->is_supported(other, 0, 0, 0) &&
                       !filter->isInvalid();
        timing = filter->timing({.format = AV_SAMPLE_FMT_S16, .channels = 6, .sample_rate = 48000});
    }
    EXPECT_TRUE(is_supported);
    EXPECT_EQ(timing.block_frames, 240);
}

TEST(PromiseTraps, TheTableOfEffectsIsNotTrapped) {
    std::size_t supporting = 0;
    {
        const RealTimeSection section;
        for (const Vorlin::EffectRecord& effect : Vorlin::allEffects())
            if (Vorlin::isSupportedStream(effect, 2, 48000)) ++supporting;
        for (const Vorlin::EffectRecord* effect : Vorlin::effectsByPrecedence())
            if (Vorlin::isSupportedStream(*effect, 8, 44100)) ++supporting;
    }
    EXPECT_EQ(supporting, 5U);
}

TEST(PromiseTraps, AQueueIsNotTrapped) {
    Vorlin::SpscQueue<int*> queue(10);
    int element = 0;
    int* popped = nullptr;
    bool is_ok = true;
    {
        const RealTimeSection section;
        for (int i = 0; i < 25; ++i) {
            is_ok = queue.push(&element) && queue.sizeForProducer() == 1 && queue.sizeForConsumer() == 1 &&
                    queue.pop(popped) && is_ok;
        }
    }
    EXPECT_TRUE(is_ok);
    EXPECT_EQ(popped, &element);
}

TEST(PromiseTraps, LookingAtAFrameIsNotTrapped) {
    const auto frame = test::makeFrame({.format = AV_SAMPLE_FMT_FLTP, .channels = 8}, test::noiseSource(1));
    AVFrame* const samples = *frame;
    bool matches = false;
    bool can_write = false;
    int channels = 0;
    std::uint64_t mask = 0;
    std::int64_t duration = 0;
    const char* format = nullptr;
    {
        const RealTimeSection section;
        channels = IQFFrame().getInfo().channels;
        const IQFFrame::audioInfo info = Vorlin::AVQFFrame::describe(samples);
        matches = Vorlin::frameMatchesDescription(info, samples);
        can_write = Vorlin::canWriteFirstPlane(samples, 100);
        channels += frame->getInfo().channels;
        mask = Vorlin::av::layoutMask(samples->ch_layout);
        Vorlin::av::setFrameDefaultLayout(samples, 8);
        Vorlin::av::setFrameDuration(samples, 1024);
        duration = Vorlin::av::frameDuration(samples);
        format = qf_get_sample_fmt_name(AV_SAMPLE_FMT_FLTP);
    }
    EXPECT_TRUE(matches);
    EXPECT_TRUE(can_write);
    EXPECT_EQ(channels, 8);
    EXPECT_EQ(mask, Vorlin::av::defaultLayoutMask(8));
    EXPECT_EQ(duration, 1024);
    EXPECT_STREQ(format, "fltp");
}

TEST(PromiseTraps, ReadingAJsonValueIsNotTrapped) {
    Vorlin::VorlinJSONItem parsed(
        R"({"number": 2.5, "a name that is too long to lie inside a string": true})");
    const std::string number = "number";
    const std::string flag = "a name that is too long to lie inside a string";
    const std::string missing = "another name that is too long to lie inside a string";
    double value = 0.0;
    bool is_ok = false;
    {
        const RealTimeSection section;
        const bool has_none = !parsed.hasItem(missing) && parsed.getInt(missing, 3) == 3;
        is_ok = parsed.isValid() && parsed.hasItem(number) && parsed.getBool(flag) && has_none;
        value = parsed.getDouble(number);
    }
    EXPECT_TRUE(is_ok);
    EXPECT_EQ(value, 2.5);
    {
        const RealTimeSection section;
        Vorlin::VorlinJSONItem moved(std::move(parsed));
        is_ok = moved.isValid();
        new (&parsed) Vorlin::VorlinJSONItem(std::move(moved));
    }
    EXPECT_TRUE(is_ok);
}

TEST(PromiseTraps, AMessageThatTheThresholdHoldsBackIsNotTrapped) {
    const RealTimeSection section;
    __log_print(Vorlin::LOG_DEBUG, "tag", "%d", 1);
    Vorlin::setLogLevel(Vorlin::LOG_QUIET);
}

TEST(PromiseTraps, AThreadsClockIsHandedOutWithoutATrap) {
    const Vorlin::qfThread thread([] { return 0; }, "idle");
    bool has_clock = false;
    {
        const auto first = thread.clock();
        const RealTimeSection section;
        has_clock = thread.clock() != nullptr;
    }
    EXPECT_TRUE(has_clock);
}

}  // namespace
