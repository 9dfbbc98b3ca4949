// Makes every request for memory in a filter's whole life fail in turn, those of C++, of the effects and of
// the conversion libraries: creation, options, frames, a change of the stream, the load guard, a dump, a seek
// and the end. The player then misses one frame or gets no filter, and the filter works again once there is
// memory.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "SonivexFilter.h"
#include "failing_calls/sweep.h"
#include "filter/dump/dump_directory.h"
#include "frame_checks.h"
#include "support/frames/audio_frames.h"
#include "support/frames/frame_matchers.h"
#include "vorlin/filter_prototype.h"
#include "vorlin/log.h"

extern "C" {
#include <libavutil/log.h>
}

// Dumps need not reach the disk here.
extern "C" int __wrap_fsync(int) {
    return 0;
}

namespace test {
namespace {

using Vorlin::filterPrototype;
using Vorlin::IQFFrame;

struct Life {
    const char* name;
    const char* options;
    FrameSpec first;   // the stream
    FrameSpec second;  // after a seek
};

const Life kLives[] = {
    {"Normalizer",
     R"({"enable_normalizer": true, "enable_dump": true})",
     {.format = AV_SAMPLE_FMT_FLTP, .frames = 512},
     {.rate_hz = 16000, .frames = 512}},
    {"Surround",
     R"({"surround_effect_type": "MegaBass", "surround_mode": 2, "enable_surround": true})",
     {.format = AV_SAMPLE_FMT_S32, .channels = 6, .frames = 480, .layout = "5.1(side)"},
     {.channels = 1, .rate_hz = 44100, .frames = 480}},
    {"Dialogue",
     R"({"dialoguenhance_voice": 2.5, "enable_dialoguenhance": true})",
     {.format = AV_SAMPLE_FMT_FLT, .frames = 512},
     {.format = AV_SAMPLE_FMT_S32, .rate_hz = 44100, .frames = 512}},
};

/** Counts the filter's log lines, without a request for memory of its own. */
class LineCount {
  public:
    LineCount() {
        Vorlin::setLogSink([this](int, const std::string&, const std::string&) { ++lines_; });
        Vorlin::setLogLevel(Vorlin::LOG_DEBUG);
    }
    ~LineCount() {
        Vorlin::setLogLevel(Vorlin::LOG_QUIET);
        Vorlin::setLogSink({});
    }
    LineCount(const LineCount&) = delete;
    LineCount& operator=(const LineCount&) = delete;
    int lines() const { return lines_; }

  private:
    int lines_ = 0;
};

/** Leads a filter through one life. */
class LifeOfAFilter {
  public:
    LifeOfAFilter(const Life& life, FailingMemory& memory) : life_(life), memory_(memory) {}

    void live() {
        filter_ = make();
        if (filter_ == nullptr) {
            EXPECT_TRUE(memory_.hasFailed());
            filter_.reset(new Vorlin::sonivexFilter({}, {}, false));
        }
        filter_->setDCA([this](int, const std::string& event) {
            EXPECT_EQ(event.rfind("SonivexFilter:", 0), 0U) << event;
            ++events_;
        });
        memory_.during([&] { EXPECT_TRUE(filter_->init(0)); });
        setOptions();
        filter_->setInvalid(false);
        playFrames(life_.first);
        reportRates();
        const std::string target = "a target whose name is too long to be kept without memory";
        memory_.during([&] {
            filter_->flush();
            filter_->setCurrentTarget(target);
        });
        playFrames(life_.second);
    }

    // There is memory again.
    std::vector<std::vector<int16_t>> liveOn() {
        EXPECT_TRUE(filter_->setOption(filterPrototype::FILTER_OPTION, life_.options, ""));
        filter_->setInvalid(false);
        filter_->flush();
        std::vector<std::vector<int16_t>> sound;
        for (uint32_t number = 0; number < 2; ++number) {
            auto frame = makeFrame(life_.first, noiseSource(number + 1, 3000));
            const auto out = pass(std::move(frame));
            EXPECT_NE(out, nullptr) << "a frame is lost although there is memory";
            if (out == nullptr) return {};
            EXPECT_EQ(avFrameOf(out)->format, life_.first.format);
            sound.push_back(samplesOf(avFrameOf(out)));
        }
        return sound;
    }

    void end() {
        memory_.during([&] { filter_.reset(); });
    }

    int lost() const { return lost_; }

  private:
    bool isOneFailure() const { return memory_.which() == FailingMemory::Which::kOne; }

    std::unique_ptr<Vorlin::IAudioFilter> make() {
        return memory_.during([] { return filterPrototype::createFilter("sonivex", {}, {}, false); });
    }

    void setOptions() {
        static const std::string options_key = filterPrototype::FILTER_OPTION;
        const std::string options = life_.options;
        const std::string none;
        const bool had_failed = memory_.hasFailed();
        const bool is_set = memory_.during([&] { return filter_->setOption(options_key, options, none); });
        if (is_set) return;
        EXPECT_TRUE(memory_.hasFailed() && (!isOneFailure() || !had_failed))
            << "options were refused although there was memory";
        EXPECT_TRUE(filter_->setOption(options_key, options, none));
    }

    void reportRates() {
        static const std::string rate_key = filterPrototype::VIDEO_FPS_OPTION;
        static const std::string speed_key = filterPrototype::PLAYER_SPEED_OPTION;
        const std::string high = "100";
        const std::string usual = "25";
        const std::string normal = "1.0";
        const std::string none;
        memory_.during([&] {
            filter_->setOption(rate_key, high, none);
            filter_->setOption(rate_key, usual, none);
            filter_->setOption(speed_key, normal, none);
        });
        EXPECT_EQ(events_, 2) << "the player must hear of an overload and of its end";
        memory_.during([&] {
            for (int i = 0; i < 200; ++i) filter_->checkTimeConsume(20);
            for (int i = 0; i < 20; ++i) filter_->checkTimeConsume(100);
        });
        // A guard that gets no memory at all cannot measure.
        if (isOneFailure()) {
            EXPECT_EQ(events_, 3) << "the player must hear that the filter works too slowly";
        }
        filter_->setInvalid(false);
    }

    void playFrames(const FrameSpec& spec) {
        for (uint32_t number = 0; number < 3; ++number) {
            auto frame = makeFrame(spec, noiseSource(number + 1, 3000));
            static_cast<AVFrame*>(*frame)->pts = 4711 + number;
            const int lines_before = log_.lines();
            const auto out = memory_.during([&] { return pass(std::move(frame)); });
            if (out == nullptr) {
                ++lost_;
                EXPECT_TRUE(memory_.hasFailed());
                if (isOneFailure()) {
                    EXPECT_GT(log_.lines(), lines_before) << "a lost frame must be logged";
                    EXPECT_EQ(lost_, 1);
                }
                continue;
            }
            EXPECT_TRUE(frameMatchesDescription(out->getInfo(), avFrameOf(out)));
            EXPECT_EQ(avFrameOf(out)->pts, 4711 + number);
            EXPECT_TRUE(avFrameOf(out)->format == spec.format ||
                        (memory_.hasFailed() && avFrameOf(out)->format == AV_SAMPLE_FMT_S16));
        }
    }

    std::unique_ptr<IQFFrame> pass(std::unique_ptr<IQFFrame> frame) {
        EXPECT_EQ(filter_->push(frame, 0), 0);
        std::unique_ptr<IQFFrame> out;
        filter_->pull(out, 0);
        return out;
    }

    const Life& life_;
    FailingMemory& memory_;
    LineCount log_;
    int events_ = 0;  // that the player heard of
    int lost_ = 0;
    std::unique_ptr<Vorlin::IAudioFilter> filter_;
};

class FilterLifeOutOfMemory : public testing::TestWithParam<Life> {
  protected:
    FilterLifeOutOfMemory() { av_log_set_level(AV_LOG_QUIET); }

    DumpDirectory dumps_;
};

INSTANTIATE_TEST_SUITE_P(Effects, FilterLifeOutOfMemory, testing::ValuesIn(kLives),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_P(FilterLifeOutOfMemory, LosesFramesAtMostAndNeverTheFilter) {
    constexpr int kStride = 23;
    std::vector<std::vector<int16_t>> unharmed;
    int lives_with_lost_frames = 0;
    const Sweep sweep = failEveryRequest(sweepStride(kStride), [&](FailingMemory& memory) {
        LifeOfAFilter life(GetParam(), memory);
        life.live();
        const auto sound = life.liveOn();
        if (unharmed.empty()) unharmed = sound;
        EXPECT_EQ(sound, unharmed) << "the filter sounds different after a failure";
        life.end();
        lives_with_lost_frames += life.lost() > 0 ? 1 : 0;
    });
    EXPECT_GT(lives_with_lost_frames, sweep.runs / 4);
}

// In a player in C, a thread that could not prepare for exceptions must not meet one. Memory returns, and the
// frames come out.
TEST(PushOutOfMemory, KeepsFramesUntilTheThreadIsReadyForExceptions) {
    Vorlin::sonivexFilter filter({}, {}, false);
    std::unique_ptr<IQFFrame> first = makeFrame({}, noiseSource(1));
    std::unique_ptr<IQFFrame> second = makeFrame({}, noiseSource(2));
    std::unique_ptr<IQFFrame> third = makeFrame({}, noiseSource(3));
    const IQFFrame* const frames[] = {first.get(), second.get()};
    std::unique_ptr<IQFFrame> out;
    {
        FailingMemory memory(1, FailingMemory::Which::kAllFromThere);
        memory.during([&] {
            EXPECT_TRUE(filter.init(0));
            EXPECT_EQ(filter.push(first, 0), 0);
        });
        EXPECT_TRUE(memory.hasFailed());
        EXPECT_NE(filter.pull(out, 0), 0) << "a thread that is not ready took a frame";
    }
    EXPECT_EQ(filter.push(second, 0), 0);
    // Each push passes one frame on, so the second frame waits for one more.
    EXPECT_EQ(filter.push(third, 0), 0);
    for (const IQFFrame* const frame : frames) {
        EXPECT_EQ(filter.pull(out, 0), 0) << "a frame is lost although there is memory";
        EXPECT_EQ(out.get(), frame);
    }
}

TEST(PushOutOfMemory, AsksEveryThreadWhetherItIsReadyForExceptions) {
    Vorlin::sonivexFilter filter({}, {}, false);
    EXPECT_TRUE(filter.init(0));
    std::thread([&] {
        std::unique_ptr<IQFFrame> frame = makeFrame({}, noiseSource(1));
        std::unique_ptr<IQFFrame> out;
        FailingMemory memory(1, FailingMemory::Which::kAllFromThere);
        memory.during([&] { EXPECT_EQ(filter.push(frame, 0), 0); });
        EXPECT_NE(filter.pull(out, 0), 0) << "a thread that is not ready took a frame";
    }).join();
}

TEST(RateOutOfMemory, IsTakenOrRefusedWithoutAnExceptionForTheMemory) {
    static const std::string key = filterPrototype::VIDEO_FPS_OPTION;
    const std::string huge = "1e400";
    const std::string word = "fast";
    const std::string none;
    Vorlin::sonivexFilter filter({}, {}, false);
    for (const bool is_ready : {false, true}) {
        SCOPED_TRACE(is_ready ? "on a thread that is ready for exceptions" : "on a new thread");
        if (is_ready) filter.init(0);
        FailingMemory memory(1, FailingMemory::Which::kAllFromThere);
        bool is_huge_taken = false;
        bool is_word_taken = true;
        memory.during([&] { is_huge_taken = filter.setOption(key, huge, none); });
        EXPECT_TRUE(is_huge_taken);
        EXPECT_FALSE(memory.hasFailed()) << "a number needs no memory";
        memory.during([&] { is_word_taken = filter.setOption(key, word, none); });
        EXPECT_FALSE(is_word_taken);
        EXPECT_TRUE(memory.hasFailed());
    }
}

}  // namespace
}  // namespace test
