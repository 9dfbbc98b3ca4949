// A filter with a worker: the player's thread makes no call that is trapped, and the worker only those on its
// list.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>

#include "filter/faults/filter_under_test.h"
#include "real_time/traps/kept_calls.h"
#include "real_time/traps/kept_lists.h"
#include "real_time/traps/real_time_section.h"
#include "support/frames/audio_frames.h"

namespace {

using test::FilterUnderTest;
using test::Kept;
using test::KeptCalls;
using test::RealTimeSection;
using Vorlin::IQFFrame;

std::atomic<bool> worker_shall_be_inside = false;
std::atomic<bool> worker_is_inside = false;

// Begins and ends the worker's section, which lasts for many runs of the filter's loop. The worker calls it
// before it sleeps.
void enterOrLeave() {
    thread_local std::optional<RealTimeSection> section;
    if (section.has_value() == worker_shall_be_inside) return;
    if (worker_shall_be_inside) {
        section.emplace();
    } else {
        section.reset();
    }
    worker_is_inside = section.has_value();
}

void waitUntilWorkerIsInside(bool is_inside) {
    worker_shall_be_inside = is_inside;
    while (worker_is_inside != is_inside) std::this_thread::sleep_for(std::chrono::milliseconds(1));
}

// Passes frames through a filter with a worker, while both threads are in sections. Returns how many came
// out.
std::size_t passThroughWorker() {
    constexpr std::size_t kFrames = 12;
    KeptCalls::beforeSleep(enterOrLeave);
    FilterUnderTest filter(test::Mode::kActive);
    filter.options(R"({"enable_surround": true})");
    filter->setInvalid(false);
    waitUntilWorkerIsInside(true);
    std::size_t out = 0;
    std::size_t in = 0;
    const test::FrameSpec spec{.format = AV_SAMPLE_FMT_FLTP, .channels = 6};
    std::unique_ptr<IQFFrame> next = test::makeFrame(spec, test::noiseSource(1));
    const test::NothingKeptHere players_thread_has_no_list;
    while (out < kFrames) {
        std::unique_ptr<IQFFrame> pulled;
        {
            const RealTimeSection section;
            if (next && filter->push(next, 0) == 0) ++in;
            filter->pull(pulled, 0);
        }
        if (pulled) ++out;
        if (!next && in < kFrames) next = test::makeFrame(spec, test::noiseSource(1));
        std::this_thread::sleep_for(std::chrono::microseconds(200));
    }
    waitUntilWorkerIsInside(false);
    return out;
}

TEST(WorkerTraps, ThePlayersThreadMakesNoCallAndTheWorkerOnlyThoseOnItsList) {
    KeptCalls kept(test::kBetweenFrames);
    kept.add(test::kEachFrame);
    kept.add(test::kFirstFrame);
    EXPECT_EQ(passThroughWorker(), 12U);
    EXPECT_GT(kept.count(Kept::kMutex), 0);
    EXPECT_GT(kept.count(Kept::kGraphInput), 0);
}

TEST(WorkerTraps, EachCallOfTheWorkerBetweenFramesIsTrapped) {
    test::expectEachIsTrapped(passThroughWorker, test::kBetweenFrames,
                              test::joined(test::kEachFrame, test::kFirstFrame));
}

}  // namespace
