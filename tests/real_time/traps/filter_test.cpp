// The filter's way of a frame makes no call that is trapped, except those on its lists (kept_lists.h).
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>

extern "C" {
#include <libavutil/dict.h>
}

#include "filter/faults/filter_under_test.h"
#include "real_time/traps/kept_calls.h"
#include "real_time/traps/kept_lists.h"
#include "real_time/traps/real_time_section.h"
#include "support/frames/audio_frames.h"
#include "support/logs/host_log_capture.h"
#include "support/processes/temporary_folder.h"
#include "vorlin/global_settings.h"

namespace {

using test::FilterUnderTest;
using test::kDump;
using test::kEachFrame;
using test::Kept;
using test::KeptCalls;
using test::kFirstFrame;
using test::kLog;
using test::kLostFrame;
using test::Peer;
using test::RealTimeSection;
using Vorlin::IQFFrame;

constexpr char kSurround[] = R"({"enable_surround": true})";
constexpr char kDialogue[] = R"({"enable_dialoguenhance": true})";
constexpr char kNormalizer[] = R"({"enable_normalizer": true})";

// A stream through one effect.
struct Way {
    const char* name;
    const char* options;
    test::FrameSpec spec;
    bool has_properties = false;
};

const Way kWays[] = {
    {"normalizer, s16", kNormalizer, {.format = AV_SAMPLE_FMT_S16}},
    {"normalizer, 5.1 in planar floats", kNormalizer, {.format = AV_SAMPLE_FMT_FLTP, .channels = 6}},
    {"surround, mono in s16", kSurround, {.format = AV_SAMPLE_FMT_S16, .channels = 1}},
    {"surround, 5.1 in s16", kSurround, {.format = AV_SAMPLE_FMT_S16, .channels = 6}},
    {"surround, 7.1 in doubles", kSurround, {.format = AV_SAMPLE_FMT_DBL, .channels = 8}},
    {"dialogue, s32", kDialogue, {.format = AV_SAMPLE_FMT_S32}},
    {"dialogue, planar floats with properties", kDialogue, {.format = AV_SAMPLE_FMT_FLTP}, true},
};

// A filter and its frames, all made in advance.
class Stream {
  public:
    static constexpr std::size_t kFrames = 5;

    explicit Stream(const Way& way) {
        filter_.options(way.options);
        filter_->setInvalid(false);
        for (auto& frame : frames_) {
            frame = test::makeFrame(way.spec, test::noiseSource(1));
            if (way.has_properties) addProperties(*test::avFrameOf(frame));
        }
    }

    FilterUnderTest& filter() { return filter_; }
    std::unique_ptr<IQFFrame>& frame(std::size_t i) { return frames_[i]; }

    // Pushes and pulls the frames before `end` that have not gone through yet.
    void pass(std::size_t end) {
        for (; next_ < end; ++next_) {
            filter_->push(frames_[next_], 0);
            filter_->pull(frames_[next_], 0);
        }
    }

    // Returns how many of the frames came out.
    std::size_t cameOut() const {
        return static_cast<std::size_t>(std::count_if(frames_.begin(), frames_.end(),
                                                      [](const auto& frame) { return frame != nullptr; }));
    }

  private:
    static void addProperties(AVFrame& frame) {
        av_dict_set(&frame.metadata, "mark", "of the frame", 0);
        av_frame_new_side_data(&frame, AV_FRAME_DATA_REPLAYGAIN, 16);
    }

    FilterUnderTest filter_;
    std::array<std::unique_ptr<IQFFrame>, kFrames> frames_;
    std::size_t next_ = 0;
};

// Passes the frames after the first of every stream in sections. Returns how many frames came out in all.
std::size_t passLaterFrames() {
    std::size_t out = 0;
    for (const Way& way : kWays) {
        Stream stream(way);
        stream.pass(1);
        {
            const RealTimeSection section;
            stream.pass(Stream::kFrames);
        }
        out += stream.cameOut();
    }
    return out;
}

// Passes the first frame of every stream in a section.
std::size_t passFirstFrames() {
    std::size_t out = 0;
    for (const Way& way : kWays) {
        Stream stream(way);
        {
            const RealTimeSection section;
            stream.pass(1);
        }
        stream.pass(Stream::kFrames);
        out += stream.cameOut();
    }
    return out;
}

constexpr std::size_t kAllFrames = std::size(kWays) * Stream::kFrames;

TEST(FilterTraps, AFrameMakesOnlyTheCallsOnTheList) {
    const KeptCalls kept(kEachFrame);
    EXPECT_EQ(passLaterFrames(), kAllFrames);
}

TEST(FilterTraps, EachOfTheseCallsIsTrapped) {
    test::expectEachIsTrapped(passLaterFrames, kEachFrame, {});
}

TEST(FilterTraps, TheFirstFrameOfAStreamMakesOnlyTheCallsOnItsList) {
    KeptCalls kept(kEachFrame);
    kept.add(kFirstFrame);
    EXPECT_EQ(passFirstFrames(), kAllFrames);
}

TEST(FilterTraps, EachCallOfTheFirstFrameIsTrapped) {
    test::expectEachIsTrapped(passFirstFrames, kFirstFrame, kEachFrame);
}

TEST(FilterTraps, AFrameMakesEachCallAKnownNumberOfTimes) {
    for (const Way& way : kWays) {
        SCOPED_TRACE(way.name);
        Stream stream(way);
        stream.pass(1);
        const KeptCalls kept(kEachFrame);
        {
            const RealTimeSection section;
            stream.pass(Stream::kFrames);
        }
        const auto calls_per_frame = [&](Kept call) {
            constexpr int kFrames = Stream::kFrames - 1;
            EXPECT_EQ(kept.count(call) % kFrames, 0);
            return kept.count(call) / kFrames;
        };
        const bool is_converted_back = way.spec.format != AV_SAMPLE_FMT_S16;
        const bool is_widened = way.spec.channels == 1;
        EXPECT_EQ(calls_per_frame(Kept::kFrameAlloc), is_converted_back ? 3 : 1);
        EXPECT_EQ(calls_per_frame(Kept::kFrameFree), is_converted_back ? 3 : 1);
        EXPECT_EQ(calls_per_frame(Kept::kFrameProperties), 2);
        EXPECT_EQ(calls_per_frame(Kept::kFrameBuffer), is_converted_back ? 1 : 0);
        EXPECT_EQ(calls_per_frame(Kept::kGraphInput), is_converted_back ? 2 : 1);
        EXPECT_EQ(calls_per_frame(Kept::kGraphOutput), is_converted_back ? 2 : 1);
        EXPECT_EQ(calls_per_frame(Kept::kNewArray), is_widened ? 2 : 1);
        EXPECT_EQ(calls_per_frame(Kept::kDeleteArray), is_widened ? 2 : 1);
    }
}

TEST(FilterTraps, AFrameThatPassesOnMakesNoCall) {
    const auto pass_on = [](Stream& stream) {
        {
            const RealTimeSection section;
            stream.pass(Stream::kFrames);
        }
        EXPECT_EQ(stream.cameOut(), Stream::kFrames);
    };
    Stream no_effect({.name = "", .options = "{}", .spec = {}});
    pass_on(no_effect);
    Stream unsupported({.name = "", .options = kSurround, .spec = {.rate_hz = 32000}});
    pass_on(unsupported);
    Stream bypassed({.name = "", .options = kSurround, .spec = {}});
    bypassed.filter()->setInvalid(true);
    pass_on(bypassed);
}

TEST(FilterTraps, AFrameThatLiesAboutItselfIsFreedAndMakesNoOtherCall) {
    Stream stream(kWays[0]);
    stream.frame(0)->getInfo().channels = 6;
    const KeptCalls kept(kLostFrame);
    {
        const RealTimeSection section;
        stream.pass(1);
    }
    EXPECT_EQ(stream.cameOut(), Stream::kFrames - 1);
    EXPECT_EQ(kept.count(Kept::kFrameFree), 1);
    EXPECT_EQ(kept.count(Kept::kDelete), 1);
}

// Passes frames while what goes through is dumped and logged.
std::size_t passDumpedFrames() {
    const test::TemporaryFolder folder;
    Vorlin::globalSettings::GetInstance().setProperty("protected.network.cache.local.saveDir", folder.path());
    Stream stream(kWays[1]);
    stream.filter().options(R"({"enable_dump": true})");
    stream.pass(1);
    {
        const RealTimeSection section;
        stream.pass(Stream::kFrames);
    }
    return stream.cameOut();
}

std::size_t passLoggedFrames() {
    const test::HostLogCapture log;
    Stream stream(kWays[1]);
    stream.frame(0)->getInfo().channels = 2;
    {
        const RealTimeSection section;
        stream.pass(1);
    }
    return stream.cameOut();
}

TEST(FilterTraps, DumpsAndLogLinesAreCallsOfTheirOwn) {
    {
        KeptCalls kept(kEachFrame);
        kept.add(kDump);
        EXPECT_EQ(passDumpedFrames(), Stream::kFrames);
        EXPECT_EQ(kept.count(Kept::kDump), 2 * static_cast<int>(Stream::kFrames - 1));
    }
    test::expectEachIsTrapped(passDumpedFrames, kDump, kEachFrame);
    {
        KeptCalls kept(kLostFrame);
        kept.add(kLog);
        EXPECT_EQ(passLoggedFrames(), Stream::kFrames - 1);
        EXPECT_EQ(kept.count(Kept::kLog), 1);
    }
    test::expectEachIsTrapped(passLoggedFrames, kLog, kLostFrame);
}

}  // namespace
