// Checks that the filter waits for its worker before it frees what the worker uses, and that the worker rests
// while there is nothing for it to do.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>

#include "filter/faults/engine_faults.h"
#include "filter/faults/filter_under_test.h"
#include "filter/faults/system_faults.h"
#include "filter/faults/worker_gate.h"

namespace test {
namespace {

using ::testing::IsEmpty;
using Vorlin::IQFFrame;

// A frame that waits behind the one that the worker holds.
class WaitingFrame : public IQFFrame {
  public:
    explicit WaitingFrame(WorkerGate& gate) : gate_(gate) {}
    ~WaitingFrame() override { gate_.note("end of a waiting frame"); }

  private:
    WorkerGate& gate_;
};

// Holds the worker of a filter inside the first frame, with another frame behind it, and then calls `end`.
class FilterWaitsForItsWorker : public ::testing::Test {
  protected:
    FilterWaitsForItsWorker() { resetEngineFaults(); }
    ~FilterWaitsForItsWorker() override { resetEngineFaults(); }

    void endWhileTheWorkerIsHeld(const std::function<void(std::unique_ptr<FilterUnderTest>&)>& end) {
        WorkerGate gate;
        auto filter = std::make_unique<FilterUnderTest>(Mode::kActive);
        filter->startNormalizer();
        std::unique_ptr<IQFFrame> frame = makeFrame({.format = AV_SAMPLE_FMT_FLTP}, noiseSource(1));
        ASSERT_EQ((*filter)->push(frame, 0), 0);
        gate.waitUntilHeld();
        frame = std::make_unique<WaitingFrame>(gate);
        ASSERT_EQ((*filter)->push(frame, 0), 0);

        end(filter);
        EXPECT_FALSE(gate.isHeld()) << "the call returned before the worker";
        EXPECT_THAT(gate.eventsWhileHeld(), IsEmpty());
        EXPECT_EQ(engineFaults().releases, 1);
        gate.open();
        filter.reset();
    }
};

TEST_F(FilterWaitsForItsWorker, InAFlush) {
    endWhileTheWorkerIsHeld([](std::unique_ptr<FilterUnderTest>& filter) { (*filter)->flush(); });
}

TEST_F(FilterWaitsForItsWorker, InItsDestructor) {
    endWhileTheWorkerIsHeld([](std::unique_ptr<FilterUnderTest>& filter) { filter.reset(); });
}

// A filter with a worker that the test itself runs, one pass at a time.
class FilterRest : public ::testing::Test {
  protected:
    FilterRest() {
        filter_.setOption(Vorlin::filterPrototype::FILTER_OPTION, R"({"enable_normalizer": true})", "");
        filter_.setInvalid(false);
    }
    void push(const FrameSpec& spec) {
        std::unique_ptr<IQFFrame> frame = makeFrame(spec, noiseSource(1));
        ASSERT_EQ(filter_.push(frame, 0), 0);
    }
    // Runs one pass. @return the milliseconds that the worker rested in it.
    int64_t restOfAPass_ms() {
        WithSystemFaults faults;
        EXPECT_EQ((filter_.*Peer::kFilterLoop)(), 0);
        return faults->slept_ms;
    }
    std::size_t waitingForTheWorker() { return (filter_.*Peer::kInQueue).sizeForProducer(); }
    std::size_t waitingForPull() { return (filter_.*Peer::kOutQueue).sizeForConsumer(); }

    Vorlin::sonivexFilter filter_{{}, {}, true};  // not initialised: it has no thread
};

TEST_F(FilterRest, LastsTenMillisecondsWithoutAFrame) {
    EXPECT_EQ(restOfAPass_ms(), 10);
    EXPECT_EQ(restOfAPass_ms(), 10);
}

TEST_F(FilterRest, LastsTenMillisecondsWhileTwoFramesWaitForPull) {
    push({});
    push({});
    restOfAPass_ms();
    push({});
    for (int pass = 0; pass < 3; ++pass) {
        EXPECT_EQ(restOfAPass_ms(), 10) << "the worker must not spin";
        EXPECT_EQ(waitingForPull(), 2u);
        EXPECT_EQ(waitingForTheWorker(), 1u);
    }
    std::unique_ptr<IQFFrame> out;
    ASSERT_EQ(filter_.pull(out, 0), 0);
    EXPECT_EQ(restOfAPass_ms(), 10) << "the worker rests after the last frame";
    EXPECT_EQ(waitingForPull(), 2u);
    EXPECT_EQ(waitingForTheWorker(), 0u);
}

TEST_F(FilterRest, DoesNotHoldUpAFrameThatThePlayerBypasses) {
    push({.channels = 3});
    push({.channels = 3});
    EXPECT_EQ(restOfAPass_ms(), 0);
    EXPECT_EQ(restOfAPass_ms(), 0);
    EXPECT_EQ(waitingForPull(), 2u);
    EXPECT_EQ(restOfAPass_ms(), 10);
}

}  // namespace
}  // namespace test
