// Filters in the hands of random hosts.
//
//     SONIVEX_SEED     the first seed of every run; 1 if it is not set
//     SONIVEX_ROUNDS   repeats every run with new seeds; 1 if it is not set
//
// A failure names its seed. The seed decides everything but the scheduling of workers.
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

#include "filter/dump/dump_directory.h"
#include "random_host/promise.h"
#include "random_host/random_host.h"

namespace test {
namespace {

unsigned long numberFrom(const char* variable, unsigned long otherwise) {
    const char* given = std::getenv(variable);
    return given != nullptr ? std::stoul(given) : otherwise;
}

std::uint64_t firstSeed() {
    return numberFrom("SONIVEX_SEED", 1);
}

std::uint64_t rounds() {
    return numberFrom("SONIVEX_ROUNDS", 1);
}

class RandomHosts : public testing::Test {
  protected:
    RandomHosts() { av_log_set_level(AV_LOG_QUIET); }

    // Lets a host make `steps` calls. A broken promise fails the test and names the seed.
    HostCounts run(std::uint64_t seed, int steps, const Habits& habits) const {
        SeededBytes bytes(seed);
        RandomHost host(bytes, habits, log_);
        int step = 0;
        try {
            for (; step < steps; ++step) {
                host.step();
                if (habits.workers == Habits::Workers::kNever) log_.checkAtRest();
            }
            host.finish();
        } catch (const BrokenPromise& broken) {
            ADD_FAILURE() << "not kept: " << broken.what() << "; SONIVEX_SEED=" << seed << ", call " << step;
        }
        return host.counts();
    }

    HostCounts runSeeds(std::uint64_t seeds, int steps, const Habits& habits) const {
        HostCounts all;
        for (std::uint64_t i = 0; i < seeds * rounds() && !HasFailure(); ++i) {
            all += run(firstSeed() + i, steps, habits);
        }
        return all;
    }

    const DropLog& log() const { return log_; }

  private:
    const DumpDirectory dumps_;
    const DropLog log_;
};

TEST_F(RandomHosts, FindEveryPromiseKeptByFiltersThatWorkInsidePush) {
    const HostCounts all = runSeeds(60, 400, {});
    EXPECT_EQ(log().givenUp(), all.given_up);
    EXPECT_GT(all.processed, 1000u);
    EXPECT_GT(all.given_up, 100u);
}

TEST_F(RandomHosts, FindEveryPromiseKeptByFiltersThatPlay) {
    const HostCounts all = runSeeds(2, 2000, {.is_hostile = false});
    EXPECT_EQ(log().givenUp(), all.given_up);
    EXPECT_GT(all.processed, 1000u);
}

// Each host has a thread, and each of its filters has a worker. They share the registry, the log and the
// folder of the dump.
TEST_F(RandomHosts, FindEveryPromiseKeptByFiltersWithWorkers) {
    constexpr Habits kHabits[] = {
        {.workers = Habits::Workers::kAlways, .may_dump = true, .longest_wait_us = 20'000},
        {.workers = Habits::Workers::kSometimes, .longest_frames = 4096, .longest_wait_us = 20'000},
        {.workers = Habits::Workers::kAlways,
         .is_hostile = false,
         .longest_frames = 200,
         .longest_wait_us = 20'000},
        {.workers = Habits::Workers::kSometimes, .may_dump = true, .longest_wait_us = 20'000},
    };
    // How many frames workers finish in time is up to the scheduler.
    constexpr std::uint64_t kMostRounds = 20;
    const auto has_seen_enough = [](const HostCounts& all) {
        return all.processed > 100 && all.given_up > 10 && all.flushes > 30 && all.filters > 30;
    };
    HostCounts all;
    for (std::uint64_t round = 0; !HasFailure(); ++round) {
        if (round >= rounds() && (has_seen_enough(all) || round >= kMostRounds * rounds())) break;
        std::array<HostCounts, std::size(kHabits)> counts;
        {
            std::vector<std::jthread> threads;
            for (std::size_t i = 0; i < counts.size(); ++i) {
                threads.emplace_back(
                    [&, i] { counts[i] = run(firstSeed() + round * counts.size() + i, 1000, kHabits[i]); });
            }
        }
        for (const HostCounts& each : counts) all += each;
        log().checkAtRest();
    }
    EXPECT_GT(all.processed, 100u);
    EXPECT_GT(all.given_up, 10u);
    EXPECT_GT(all.flushes, 30u);
    EXPECT_GT(all.filters, 30u);
}

}  // namespace
}  // namespace test
