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

constexpr char kName[] = "test worker";

template <typename Condition>
void waitUntil(Condition condition) {
    while (!condition()) qf_msleep(1);  // the time limit of the test ends an endless wait
}

void burn(milliseconds cpu_time) {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    const auto read = [&] {
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
        return std::chrono::seconds(now.tv_sec) + nanoseconds(now.tv_nsec);
    };
    const auto end = read() + cpu_time;
    while (read() < end) {
    }
}

TEST(QfThread, RunsNothingBeforeItIsStarted) {
    std::atomic<int> runs{0};
    qfThread thread([&] { return ++runs; }, kName);
    qf_msleep(20);
    EXPECT_EQ(runs, 0);
}

TEST(QfThread, RunsItsBodyRepeatedly) {
    std::atomic<int> runs{0};
    qfThread thread([&] { return ++runs; }, kName);
    thread.start();
    waitUntil([&] { return runs > 100; });
}

TEST(QfThread, PauseWaitsForTheEndOfTheBody) {
    std::atomic<bool> is_inside{false};
    std::atomic<int> runs{0};
    qfThread thread(
        [&] {
            is_inside = true;
            qf_msleep(5);
            ++runs;
            is_inside = false;
            return 0;
        },
        kName);
    for (int round = 0; round < 20; ++round) {
        thread.start();
        waitUntil([&] { return is_inside.load(); });
        thread.pause();
        EXPECT_FALSE(is_inside);
        const int runs_at_pause = runs;
        qf_msleep(8);
        EXPECT_EQ(runs, runs_at_pause) << "the body ran while paused";
    }
}

TEST(QfThread, ContinuesOnTheSameThreadAfterAPause) {
    std::atomic<int> runs{0};
    std::atomic<std::thread::id> worker;
    qfThread thread(
        [&] {
            worker = std::this_thread::get_id();
            return ++runs;
        },
        kName);
    thread.start();
    waitUntil([&] { return runs > 0; });
    const auto before = worker.load();
    thread.pause();
    const int runs_at_pause = runs;
    thread.start();
    waitUntil([&] { return runs > runs_at_pause; });
    EXPECT_EQ(worker.load(), before);
    EXPECT_NE(before, std::this_thread::get_id());
}

TEST(QfThread, CanBePausedByItsOwnBody) {
    std::atomic<int> runs{0};
    qfThread* self = nullptr;
    qfThread thread(
        [&] {
            self->pause();
            return ++runs;
        },
        kName);
    self = &thread;
    for (int expected = 1; expected <= 3; ++expected) {
        thread.start();
        waitUntil([&] { return runs == expected; });
        qf_msleep(5);
        EXPECT_EQ(runs, expected);
    }
}

TEST(QfThread, CanBeStoppedByItsOwnBodyAndStartedAgain) {
    std::atomic<int> runs{0};
    qfThread* self = nullptr;
    qfThread thread(
        [&] {
            self->stop();
            return ++runs;
        },
        kName);
    self = &thread;
    thread.start();
    waitUntil([&] { return runs == 1; });
    thread.start();
    waitUntil([&] { return runs == 2; });
}

TEST(QfThread, StopWaitsForTheBodyAndStartRunsItAgain) {
    std::atomic<bool> is_inside{false};
    std::atomic<int> runs{0};
    qfThread thread(
        [&] {
            is_inside = true;
            qf_msleep(5);
            ++runs;
            is_inside = false;
            return 0;
        },
        kName);
    for (int round = 0; round < 5; ++round) {
        const int runs_before = runs;
        thread.start();
        waitUntil([&] { return runs > runs_before; });
        thread.stop();
        EXPECT_FALSE(is_inside);
    }
    thread.stop();
    thread.pause();
}

TEST(QfThread, DestructorEndsRunningPausedAndUnstartedThreads) {
    std::atomic<int> runs{0};
    {
        qfThread running([&] { return ++runs; }, kName);
        running.start();
        qfThread paused([&] { return ++runs; }, kName);
        paused.start();
        paused.pause();
        const qfThread unstarted([&] { return ++runs; }, kName);
    }
    const int runs_at_end = runs;
    qf_msleep(10);
    EXPECT_EQ(runs, runs_at_end);
}

TEST(QfThread, ShowsItsNameCutToFifteenBytes) {
    std::array<char, 32> shown{};
    std::atomic<bool> is_read{false};
    qfThread thread(
        [&] {
            if (!is_read) pthread_getname_np(pthread_self(), shown.data(), shown.size());
            is_read = true;
            qf_msleep(1);
            return 0;
        },
        "a name of more than fifteen bytes");
    thread.start();
    waitUntil([&] { return is_read.load(); });
    EXPECT_STREQ(shown.data(), "a name of more ");
}

TEST(QfThreadClock, CountsProcessorTimeButNotSleep) {
    std::atomic<int> runs{0};
    qfThread thread(
        [&] {
            if (runs == 0) burn(milliseconds(30));
            qf_msleep(2);
            return ++runs;
        },
        kName);
    const auto clock = thread.clock();
    EXPECT_EQ(clock->cpuTime(), nanoseconds(0));
    thread.start();
    waitUntil([&] { return runs > 50; });
    thread.pause();
    EXPECT_GE(clock->cpuTime(), milliseconds(30));
    EXPECT_LT(clock->cpuTime(), milliseconds(30 + 50));  // excludes 50 sleeps of 2 ms
}

TEST(QfThreadClock, BarelyAdvancesWhilePaused) {
    qfThread thread([] { return 0; }, kName);
    thread.start();
    qf_msleep(2);
    thread.pause();
    const auto before = thread.clock()->cpuTime();
    qf_msleep(100);
    EXPECT_LT(thread.clock()->cpuTime() - before, milliseconds(5)) << "a paused thread must not spin";
}

TEST(QfThreadClock, StopsWithItsThreadAndContinuesWithTheNext) {
    std::shared_ptr<const qfThreadClock> clock;
    {
        std::atomic<int> runs{0};
        const auto burn_once = [&] {
            burn(milliseconds(5));
            return ++runs;
        };
        qfThread thread(burn_once, kName);
        clock = thread.clock();
        thread.start();
        waitUntil([&] { return runs > 0; });
        thread.stop();
        const auto at_stop = clock->cpuTime();
        EXPECT_GE(at_stop, milliseconds(5));
        burn(milliseconds(10));
        EXPECT_EQ(clock->cpuTime(), at_stop);
        const int runs_at_stop = runs;
        thread.start();
        waitUntil([&] { return runs > runs_at_stop; });
        EXPECT_GE(clock->cpuTime(), at_stop + milliseconds(5));
    }
    const auto at_end = clock->cpuTime();
    qf_msleep(5);
    EXPECT_EQ(clock->cpuTime(), at_end);
}

TEST(QfThreadClock, TracksTheNewestQfThreadOfEachCallingThread) {
    qfThread first([] { return 0; }, kName);
    EXPECT_EQ(qfThread::clockOfNewest(), first.clock());
    qfThread second([] { return 0; }, kName);
    EXPECT_EQ(qfThread::clockOfNewest(), second.clock());
    std::thread([] { EXPECT_EQ(qfThread::clockOfNewest(), nullptr); }).join();
}

TEST(QfThread, SurvivesRandomStartsPausesAndStops) {
    constexpr unsigned kSeed = 20240611;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937 random(kSeed);
    int plain = 0;  // not atomic, because the body does not run after pause or stop returns
    std::atomic<bool> may_run{false};
    std::atomic<bool> ran_wrongly{false};
    qfThread thread(
        [&] {
            if (!may_run) ran_wrongly = true;
            return ++plain;
        },
        kName);
    std::atomic<bool> is_done{false};
    std::thread watcher([&, clock = thread.clock()] {
        nanoseconds last{};
        while (!is_done) {
            const auto now = clock->cpuTime();
            EXPECT_GE(now, last) << "processor time decreased";
            last = now;
        }
    });
    for (int step = 0; step < 5000; ++step) {
        const auto choice = random() % 16;
        if (choice < 8) {
            may_run = true;
            thread.start();
        } else {
            choice == 8 ? thread.stop() : thread.pause();
            may_run = false;
            ++plain;
        }
    }
    thread.stop();
    is_done = true;
    watcher.join();
    EXPECT_FALSE(ran_wrongly);
    EXPECT_GT(plain, 0);
}

TEST(QfSleep, ReturnsAtOnceForZeroOrLessAndOtherwiseSleepsLongEnough) {
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
