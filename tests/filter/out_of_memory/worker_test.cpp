// Makes every request for memory of a filter's worker fail in turn, once and from then on: of the first run
// of its thread with the first frame of a stream, and of a later frame. The frame is then lost, with a log
// line, or comes out. The next frame is right again.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "SonivexFilter.h"
#include "failing_calls/sweep.h"
#include "filter/faults/filter_under_test.h"
#include "filter/out_of_memory/last_failure_line.h"
#include "filter/out_of_memory/worker_turns.h"
#include "frame_checks.h"
#include "support/frames/audio_frames.h"
#include "support/frames/frame_matchers.h"
#include "vorlin/filter_prototype.h"

extern "C" {
#include <libavutil/log.h>
}

namespace test {
namespace {

using Vorlin::IQFFrame;
using Samples = std::vector<int16_t>;

/** A stream and the options with which a filter plays it. */
struct Stream {
    const char* name;
    const char* options;
    FrameSpec spec;
};

const Stream kStreams[] = {
    {"Normalizer", R"({"enable_normalizer": true})", {.frames = 512}},
    {"NormalizerOfPlanarFloats",
     R"({"enable_normalizer": true})",
     {.format = AV_SAMPLE_FMT_FLTP, .frames = 512}},
    {"Surround",
     R"({"surround_effect_type": "MegaBass", "surround_mode": 2, "enable_surround": true})",
     {.format = AV_SAMPLE_FMT_S32, .channels = 6, .frames = 480, .layout = "5.1(side)"}},
    {"SurroundOfMono", R"({"enable_surround": true})", {.channels = 1, .rate_hz = 44100, .frames = 480}},
    {"Dialogue",
     R"({"dialoguenhance_voice": 2.5, "enable_dialoguenhance": true})",
     {.format = AV_SAMPLE_FMT_FLT, .frames = 512}},
};

/** Plays frames through a filter with a worker, one turn for each. */
class WorkersFilter {
  public:
    explicit WorkersFilter(const Stream& stream) : stream_(stream) {
        EXPECT_TRUE(filter_.init(0));
        EXPECT_TRUE(filter_.setOption(Vorlin::filterPrototype::FILTER_OPTION, stream.options, ""));
        filter_.setInvalid(false);
    }

    Vorlin::sonivexFilter& filter() { return filter_; }

    /** Passes frame `number` while `memory` fails on the worker; null: none fails. */
    std::unique_ptr<IQFFrame> pass(std::uint32_t number, FailingMemory* memory = nullptr) {
        std::unique_ptr<IQFFrame> frame = makeFrame(stream_.spec, noiseSource(number, 3000));
        avFrameOf(frame)->pts = number;
        EXPECT_EQ(filter_.push(frame, 0), Vorlin::kSuccess);
        auto out = takeTurn(memory);
        EXPECT_TRUE(out == nullptr || avFrameOf(out)->pts == number);
        return out;
    }

    /** Returns whether the worker has left a frame in its queue. */
    bool isFrameWaiting() { return (filter_.*Peer::kInQueue).sizeForProducer() > 0; }

    /** Has the worker run once more. @return the frame that came out, or null. */
    std::unique_ptr<IQFFrame> takeTurn(FailingMemory* memory = nullptr) {
        WorkerTurns::take(memory);
        std::unique_ptr<IQFFrame> out;
        filter_.pull(out, 0);
        EXPECT_TRUE(out == nullptr || frameMatchesDescription(out->getInfo(), avFrameOf(out)));
        return out;
    }

  private:
    const Stream& stream_;
    Vorlin::sonivexFilter filter_{{}, {}, true};
};

// Plays frames without a failure. @return their samples.
std::vector<Samples> soundOf(const Stream& stream, const std::vector<std::uint32_t>& numbers) {
    WorkersFilter filter(stream);
    std::vector<Samples> sound;
    for (const std::uint32_t number : numbers) {
        const auto out = filter.pass(number);
        EXPECT_NE(out, nullptr);
        sound.push_back(out != nullptr ? samplesOf(avFrameOf(out)) : Samples{});
    }
    return sound;
}

// The mixer of the normalizer needs memory for a block, which is silent without it. The limiter then recovers
// differently, by up to 0.11 dB.
bool isAlmost(const Samples& samples, const Samples& expected) {
    constexpr int kPart = 50;  // 0.17 dB
    if (samples.size() != expected.size()) return false;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (std::abs(samples[i] - expected[i]) > std::abs(expected[i]) / kPart + 1) return false;
    }
    return true;
}

bool isSilent(const Samples& samples) {
    return std::all_of(samples.begin(), samples.end(), [](int16_t sample) { return sample == 0; });
}

class WorkerOutOfMemory : public testing::TestWithParam<Stream> {
  protected:
    WorkerOutOfMemory() { av_log_set_level(AV_LOG_QUIET); }

    /** The sound of a stream, whose frame `hit` meets the failures. */
    struct Sound {
        std::vector<Samples> whole;           // if frame `hit` went through the effect
        std::vector<Samples> without_effect;  // if it was lost before
        Samples afresh;                       // of the first frame, after a flush
    };

    static Sound soundWith(std::uint32_t hit) {
        std::vector<std::uint32_t> all;
        std::vector<std::uint32_t> others;
        for (std::uint32_t number = 0; number <= hit + 1; ++number) {
            all.push_back(number);
            if (number != hit) others.push_back(number);
        }
        return {soundOf(GetParam(), all), soundOf(GetParam(), others), soundOf(GetParam(), {0}).front()};
    }

    void expectRight(const std::unique_ptr<IQFFrame>& out, const Sound& sound, std::uint32_t hit) const {
        const Samples samples = samplesOf(avFrameOf(out));
        EXPECT_TRUE(avFrameOf(out)->format == GetParam().spec.format ||
                    avFrameOf(out)->format == AV_SAMPLE_FMT_S16);
        EXPECT_TRUE(samples == sound.whole[hit] || isSilent(samples)) << "the frame is damaged";
    }

    // @return how many frames were lost.
    int failInFrame(std::uint32_t hit, int stride) {
        const WorkerTurns turns;
        const Sound sound = soundWith(hit);
        int lost = 0;
        int waited = 0;
        const Sweep sweep = failEveryRequest(sweepStride(stride), [&](FailingMemory& memory) {
            LastFailureLine log;
            WorkersFilter filter(GetParam());
            for (std::uint32_t number = 0; number < hit; ++number) {
                ASSERT_NE(filter.pass(number), nullptr);
            }
            const int lines_before = log.lines();
            auto out = filter.pass(hit, &memory);
            if (out == nullptr && filter.isFrameWaiting()) {
                ++waited;
                out = filter.takeTurn();
                EXPECT_NE(out, nullptr) << "a frame that waits for memory comes out later";
            } else if (out == nullptr) {
                ++lost;
                // A message needs memory itself.
                if (memory.which() == FailingMemory::Which::kOne) {
                    EXPECT_GT(log.lines(), lines_before) << "a lost frame must be logged";
                }
            }
            EXPECT_TRUE(out != nullptr || memory.hasFailed());
            if (out != nullptr) expectRight(out, sound, hit);
            const auto next = filter.pass(hit + 1);
            ASSERT_NE(next, nullptr) << "a frame is lost although there is memory: " << log.text();
            const Samples samples = samplesOf(avFrameOf(next));
            EXPECT_EQ(avFrameOf(next)->format, GetParam().spec.format);
            EXPECT_TRUE(isAlmost(samples, sound.whole.back()) ||
                        isAlmost(samples, sound.without_effect.back()))
                << "the frame after the failure is wrong";
            filter.filter().flush();
            const auto afresh = filter.pass(0);
            ASSERT_NE(afresh, nullptr);
            EXPECT_EQ(samplesOf(avFrameOf(afresh)), sound.afresh)
                << "the filter sounds different after a failure";
        });
        RecordProperty("requests", sweep.requests);
        RecordProperty("runs", sweep.runs);
        RecordProperty("lost", lost);
        EXPECT_EQ(waited, hit == 0 ? 2 : 0) << "the frame waits only if the worker cannot begin";
        return lost;
    }
};

INSTANTIATE_TEST_SUITE_P(Streams, WorkerOutOfMemory, testing::ValuesIn(kStreams),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_P(WorkerOutOfMemory, CostsAtMostTheFirstFrameOfAStream) {
    EXPECT_GT(failInFrame(0, 13), 0);
}

TEST_P(WorkerOutOfMemory, CostsAtMostALaterFrame) {
    EXPECT_GT(failInFrame(2, 1), 0);
}

// The thread is new for each run: what it makes for itself at its first worker counts as well.
TEST(WorkersStartOutOfMemory, LeavesAFilterThatWorksWithOrWithoutAWorker) {
    int without_worker = 0;
    failEveryRequest(1, [&](FailingMemory& memory) {
        std::thread([&] {
            const WorkerTurns turns;
            LastFailureLine log;
            Vorlin::sonivexFilter filter({}, {}, true);
            memory.during([&] { EXPECT_TRUE(filter.init(0)); });
            if (memory.which() == FailingMemory::Which::kOne && log.lines() > 0) {
                ++without_worker;
                EXPECT_TRUE(std::string(log.text()).starts_with("sonivex: cannot start the worker thread ("))
                    << log.text();
            }
            EXPECT_TRUE(filter.init(0)) << "there is memory again";
            std::unique_ptr<IQFFrame> frame = makeFrame({}, noiseSource(1));
            EXPECT_EQ(filter.push(frame, 0), Vorlin::kSuccess);
            WorkerTurns::take(nullptr);
            EXPECT_EQ(filter.pull(frame, 0), Vorlin::kSuccess);
            filter.flush();
        }).join();
    });
    EXPECT_GT(without_worker, 2);
}

}  // namespace
}  // namespace test
