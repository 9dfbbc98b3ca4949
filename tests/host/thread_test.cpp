#include "vorlin/thread.h"

#include <gtest/gtest.h>
#include <pthread.h>
#include <time.h>

#include <array>
#include <atomic>
#include <random>
#include <thread>

namespace Vorlin {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr char NAME[] = "test worker";

template <typename Condition>
void waitUntil(Condition condition) {
    while (!condition()) qf_msleep(1);  // the test's own time limit ends a wait that never comes true
}

void burn(milliseconds cpuTime) {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    const auto read = [&] {
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return std::chrono::seconds(now.tv_sec) + nanoseconds(now.tv_nsec);
    };
    const auto end = read() + cpuTime;
    while (read() < end) {
    }
}

TEST(Thread, RunsNothingBeforeItIsStarted) {
    std::atomic<int> runs{0};
    qfThread thread([&] { return ++runs; }, NAME);
    qf_msleep(20);
    EXPECT_EQ(runs, 0);
}

TEST(Thread, RunsItsBodyAgainAndAgain) {
    std::atomic<int> runs{0};
    qfThread thread([&] { return ++runs; }, NAME);
    thread.start();
    waitUntil([&] { return runs > 100; });
}

TEST(Thread, PauseReturnsOnlyWhenTheBodyIsNotRunning) {
    std::atomic<bool> isInside{false};
    std::atomic<int> runs{0};
    qfThread thread(
        [&] {
            isInside = true;
            qf_msleep(5);
            ++runs;
            isInside = false;
            return 0;
        },
        NAME);
    for (int round = 0; round < 20; ++round) {
        thread.start();
        waitUntil([&] { return isInside.load(); });
        thread.pause();
        EXPECT_FALSE(isInside);
        const int runsAtPause = runs;
        qf_msleep(8);
        EXPECT_EQ(runs, runsAtPause) << "the body ran while paused";
    }
}

TEST(Thread, GoesOnAfterAPauseOnTheSameThread) {
    std::atomic<int> runs{0};
    std::atomic<std::thread::id> worker;
    qfThread thread(
        [&] {
            worker = std::this_thread::get_id();
            return ++runs;
        },
        NAME);
    thread.start();
    waitUntil([&] { return runs > 0; });
    const auto before = worker.load();
    thread.pause();
    const int runsAtPause = runs;
    thread.start();
    waitUntil([&] { return runs > runsAtPause; });
    EXPECT_EQ(worker.load(), before);
    EXPECT_NE(before, std::this_thread::get_id());
}

TEST(Thread, MayBePausedByItsOwnBody) {
    std::atomic<int> runs{0};
    qfThread* self = nullptr;
    qfThread thread(
        [&] {
            self->pause();
            return ++runs;
        },
        NAME);
    self = &thread;
    for (int expected = 1; expected <= 3; ++expected) {
        thread.start();
        waitUntil([&] { return runs == expected; });
        qf_msleep(5);
        EXPECT_EQ(runs, expected);
    }
}

TEST(Thread, MayBeStoppedByItsOwnBodyAndStartedAgain) {
    std::atomic<int> runs{0};
    qfThread* self = nullptr;
    qfThread thread(
        [&] {
            self->stop();
            return ++runs;
        },
        NAME);
    self = &thread;
    thread.start();
    waitUntil([&] { return runs == 1; });
    thread.start();
    waitUntil([&] { return runs == 2; });
}

TEST(Thread, StopWaitsForTheBodyAndStartBeginsAnew) {
    std::atomic<bool> isInside{false};
    std::atomic<int> runs{0};
    qfThread thread(
        [&] {
            isInside = true;
            qf_msleep(5);
            ++runs;
            isInside = false;
            return 0;
        },
        NAME);
    for (int round = 0; round < 5; ++round) {
        const int runsBefore = runs;
        thread.start();
        waitUntil([&] { return runs > runsBefore; });
        thread.stop();
        EXPECT_FALSE(isInside);
    }
    thread.stop();
    thread.pause();
}

TEST(Thread, DestructionEndsARunningAPausedAndAnUnstartedThread) {
    std::atomic<int> runs{0};
    {
        qfThread running([&] { return ++runs; }, NAME);
        running.start();
        qfThread paused([&] { return ++runs; }, NAME);
        paused.start();
        paused.pause();
        const qfThread unstarted([&] { return ++runs; }, NAME);
    }
    const int runsAtEnd = runs;
    qf_msleep(10);
    EXPECT_EQ(runs, runsAtEnd);
}

TEST(Thread, CarriesItsNameCutToWhatTheSystemShows) {
    std::array<char, 32> shown{};
    std::atomic<bool> isRead{false};
    qfThread thread(
        [&] {
            if (!isRead) pthread_getname_np(pthread_self(), shown.data(), shown.size());
            isRead = true;
            qf_msleep(1);
            return 0;
        },
        "a name of more than fifteen bytes");
    thread.start();
    waitUntil([&] { return isRead.load(); });
    EXPECT_STREQ(shown.data(), "a name of more ");
}

TEST(ThreadClock, CountsProcessorTimeAndNotSleep) {
    std::atomic<int> runs{0};
    qfThread thread(
        [&] {
            if (runs == 0) burn(milliseconds(30));
            qf_msleep(2);
            return ++runs;
        },
        NAME);
    const auto clock = thread.clock();
    EXPECT_EQ(clock->cpuTime(), nanoseconds(0));
    thread.start();
    waitUntil([&] { return runs > 50; });
    thread.pause();
    EXPECT_GE(clock->cpuTime(), milliseconds(30));
    EXPECT_LT(clock->cpuTime(), milliseconds(30 + 50));  // 50 sleeps of 2 ms are not in it
}

TEST(ThreadClock, HardlyMovesWhilePaused) {
    qfThread thread([] { return 0; }, NAME);
    thread.start();
    qf_msleep(2);
    thread.pause();
    const auto before = thread.clock()->cpuTime();
    qf_msleep(100);
    EXPECT_LT(thread.clock()->cpuTime() - before, milliseconds(5)) << "a paused thread spins";
}

TEST(ThreadClock, StandsStillAfterItsThreadEndedAndGoesOnWithTheNext) {
    std::shared_ptr<const qfThreadClock> clock;
    {
        std::atomic<int> runs{0};
        const auto burnOnce = [&] {
            burn(milliseconds(5));
            return ++runs;
        };
        qfThread thread(burnOnce, NAME);
        clock = thread.clock();
        thread.start();
        waitUntil([&] { return runs > 0; });
        thread.stop();
        const auto atStop = clock->cpuTime();
        EXPECT_GE(atStop, milliseconds(5));
        burn(milliseconds(10));
        EXPECT_EQ(clock->cpuTime(), atStop);
        const int runsAtStop = runs;
        thread.start();
        waitUntil([&] { return runs > runsAtStop; });
        EXPECT_GE(clock->cpuTime(), atStop + milliseconds(5));
    }
    const auto atEnd = clock->cpuTime();
    qf_msleep(5);
    EXPECT_EQ(clock->cpuTime(), atEnd);
}

TEST(ThreadClock, OfTheNewestIsKnownForEachCallingThread) {
    qfThread first([] { return 0; }, NAME);
    EXPECT_EQ(qfThread::clockOfNewest(), first.clock());
    qfThread second([] { return 0; }, NAME);
    EXPECT_EQ(qfThread::clockOfNewest(), second.clock());
    std::thread([] { EXPECT_EQ(qfThread::clockOfNewest(), nullptr); }).join();
}

TEST(Thread, SurvivesRandomStartsPausesAndStops) {
    constexpr unsigned SEED = 20240611;
    SCOPED_TRACE("seed " + std::to_string(SEED));
    std::mt19937 random(SEED);
    int plain = 0;  // not atomic: pause and stop promise that nobody else touches it
    std::atomic<bool> mayRun{false};
    std::atomic<bool> ranWrongly{false};
    qfThread thread(
        [&] {
            if (!mayRun) ranWrongly = true;
            return ++plain;
        },
        NAME);
    std::atomic<bool> isDone{false};
    std::thread watcher([&, clock = thread.clock()] {
        nanoseconds last{};
        while (!isDone) {
            const auto now = clock->cpuTime();
            EXPECT_GE(now, last) << "processor time went back";
            last = now;
        }
    });
    for (int step = 0; step < 5000; ++step) {
        const auto choice = random() % 16;
        if (choice < 8) {
            mayRun = true;
            thread.start();
        } else {
            choice == 8 ? thread.stop() : thread.pause();
            mayRun = false;
            ++plain;
        }
    }
    thread.stop();
    isDone = true;
    watcher.join();
    EXPECT_FALSE(ranWrongly);
    EXPECT_GT(plain, 0);
}

TEST(Sleep, ReturnsAtOnceForNothingAndLessAndElseSleepsLongEnough) {
    const auto begin = std::chrono::steady_clock::now();
    qf_msleep(0);
    qf_msleep(-1);
    qf_msleep(INT64_MIN);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(1));
    qf_msleep(20);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(20));
}

}  // namespace
}  // namespace Vorlin
