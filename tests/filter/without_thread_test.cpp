// Checks a filter that cannot start its worker thread: it processes frames on the player's thread instead.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "filter/faults/filter_under_test.h"
#include "filter/faults/system_faults.h"
#include "support/effects/normalizer_effect.h"
#include "support/frames/frame_matchers.h"
#include "support/logs/host_log_capture.h"

namespace test {
namespace {

using Vorlin::IQFFrame;

constexpr char kNoThread[] =
    "16 sonivex: cannot start the worker thread (no thread: Resource temporarily unavailable); push "
    "processes "
    "frames on the player's thread until a later init starts the worker";

// A frame that the filter passes on, and that records the thread that read its description.
class WatchingFrame : public IQFFrame {
  public:
    explicit WatchingFrame(std::atomic<std::thread::id>& reader) : reader_(reader) {}
    audioInfo& getInfo() override {
        reader_ = std::this_thread::get_id();
        return IQFFrame::getInfo();
    }

  private:
    std::atomic<std::thread::id>& reader_;
};

std::thread::id threadThatWorks(FilterUnderTest& filter) {
    std::atomic<std::thread::id> reader;
    EXPECT_NE(filter.pass(std::make_unique<WatchingFrame>(reader)), nullptr);
    return reader;
}

TEST(FilterWithoutThread, ProcessesFramesInsidePush) {
    HostLogCapture log;
    WithSystemFaults faults;
    faults->threads_to_refuse = 1;
    FilterUnderTest filter(Mode::kActive);
    EXPECT_EQ(log.count(kNoThread), 1);
    EXPECT_EQ(filter.field(Peer::kThread), nullptr);
    filter.startNormalizer();
    NormalizerEffect engine(2);
    for (uint32_t seed = 0; seed < 4; ++seed) {
        std::unique_ptr<IQFFrame> frame = makeFrame({}, noiseSource(seed, 3000));
        const auto expected = engine.process(samplesOf(avFrameOf(frame)));
        ASSERT_EQ(filter->push(frame, 0), 0);
        std::unique_ptr<IQFFrame> out;
        ASSERT_EQ(filter->pull(out, 0), 0) << "the frame must be ready when push returns";
        EXPECT_TRUE(holdsSamples(avFrameOf(out), expected));
    }
    EXPECT_EQ(threadThatWorks(filter), std::this_thread::get_id());
    EXPECT_EQ(faults->sleeps, 0) << "the filter must not put the player's thread to sleep";
}

TEST(FilterWithoutThread, FlushesAndDestroysLikeAnyOtherFilter) {
    WithSystemFaults faults;
    faults->threads_to_refuse = 1;
    FilterUnderTest filter(Mode::kActive);
    filter.startNormalizer();
    ASSERT_NE(filter.pass(makeFrame({.format = AV_SAMPLE_FMT_FLTP}, noiseSource(1))), nullptr);
    filter->flush();
    EXPECT_EQ(filter.field(Peer::kNormalizerHandle), nullptr);
    EXPECT_EQ(filter.field(Peer::kThread), nullptr) << "a flush must not create a worker";
    ASSERT_NE(filter.pass(makeFrame({}, noiseSource(1))), nullptr);
}

TEST(FilterWithoutThread, HandsOverToAWorkerThatALaterInitStarts) {
    HostLogCapture log;
    WithSystemFaults faults;
    faults->threads_to_refuse = 2;
    FilterUnderTest filter(Mode::kActive);
    EXPECT_TRUE(filter->init(0));
    EXPECT_EQ(log.count(kNoThread), 2);
    filter.startNormalizer();
    NormalizerEffect engine(2);
    std::vector<std::vector<int16_t>> expected;
    for (uint32_t seed = 0; seed < 4; ++seed) {  // the last two frames wait in the input queue
        std::unique_ptr<IQFFrame> frame = makeFrame({}, noiseSource(seed, 3000));
        expected.push_back(engine.process(samplesOf(avFrameOf(frame))));
        ASSERT_EQ(filter->push(frame, 0), 0);
    }
    EXPECT_TRUE(filter->init(0));
    EXPECT_EQ(log.count(kNoThread), 2);
    ASSERT_NE(filter.field(Peer::kThread), nullptr);
    for (const std::vector<int16_t>& samples : expected) {
        const auto out = filter.pullPatiently();
        ASSERT_NE(out, nullptr);
        EXPECT_TRUE(holdsSamples(avFrameOf(out), samples));
    }
    EXPECT_NE(threadThatWorks(filter), std::this_thread::get_id());
}

}  // namespace
}  // namespace test
