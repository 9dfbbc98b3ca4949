#include "work_thread.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <semaphore>
#include <stdexcept>
#include <vector>

namespace {

using sonivex_tool::WorkThread;
using testing::ElementsAre;
using testing::SizeIs;

TEST(WorkThread, WorksOnEveryItemInOrder) {
    std::vector<int> seen;
    WorkThread<int> thread(2, [&](int item) { seen.push_back(item); });
    for (int i = 0; i < 1000; ++i) thread.push(i);
    thread.finish();
    ASSERT_THAT(seen, SizeIs(1000));
    for (int i = 0; i < 1000; ++i) EXPECT_EQ(seen[static_cast<size_t>(i)], i);
}

TEST(WorkThread, HoldsNoMoreItemsThanItsCapacity) {
    std::binary_semaphore may_work(0);
    std::atomic<int> pushed = 0;
    WorkThread<int> thread(3, [&](int item) {
        if (item == 0) may_work.acquire();
    });
    std::thread producer([&] {
        for (int i = 0; i < 10; ++i) {
            thread.push(i);
            ++pushed;
        }
    });
    // The thread holds the first item, so three more fit and the fifth must wait.
    while (pushed < 4) std::this_thread::yield();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(pushed, 4);
    may_work.release();
    producer.join();
    thread.finish();
    EXPECT_EQ(pushed, 10);
}

TEST(WorkThread, ThrowsWhatTheWorkThrewAndStopsWorking) {
    std::vector<int> seen;
    WorkThread<int> thread(1, [&](int item) {
        if (item == 2) throw std::runtime_error("two");
        seen.push_back(item);
    });
    const auto push_many = [&] {
        for (int i = 0; i < 100; ++i) thread.push(i);
        thread.finish();
    };
    EXPECT_THROW(push_many(), std::runtime_error);
    EXPECT_THAT(seen, ElementsAre(0, 1));
}

TEST(WorkThread, ThrowsOnFinishWhatTheLastItemThrew) {
    WorkThread<int> thread(4, [](int) { throw std::runtime_error("last"); });
    thread.push(1);
    EXPECT_THROW(thread.finish(), std::runtime_error);
}

TEST(WorkThread, DropsWhatStillWaitsWhenItIsDestroyed) {
    const auto item = std::make_shared<int>(7);
    std::binary_semaphore has_started(0);
    std::binary_semaphore may_work(0);
    int done = 0;
    std::thread release;
    {
        WorkThread<std::shared_ptr<int>> thread(8, [&](const std::shared_ptr<int>&) {
            has_started.release();
            may_work.acquire();
            ++done;
        });
        for (int i = 0; i < 5; ++i) thread.push(item);
        has_started.acquire();
        release = std::thread([&] {
            while (item.use_count() > 2) std::this_thread::yield();
            may_work.release();
        });
    }
    release.join();
    EXPECT_EQ(done, 1);
    EXPECT_EQ(item.use_count(), 1);
}

}  // namespace
