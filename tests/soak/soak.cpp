// Plays hours of audio faster than real time, in all ways in which the product is used at once, and checks
// that nothing grows and that no frame is lost without a log line.
//
//     soak [--minutes N] [--seed N]      6000 (100 hours) and 1 without options, 1000000 at most
//
// The audio is cut into laps: hours, or tenths of a shorter soak. After each lap everything rests, and the
// program prints what the process holds. What it holds then must be what it held after the first lap.
//
// Of 100 hours, filters that work inside push play 35, filters with workers 15, a player 35, and the effects
// through the library's interface 15. Filters with workers play slowest, because their host waits for them.
#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

#include "filter/dump/dump_directory.h"
#include "random_host/promise.h"
#include "random_host/samples.h"
#include "soak/lanes.h"
#include "soak/process_state.h"

namespace {

using test::HostCounts;
using test::Lane;
using test::ProcessState;
using test::promise;

// A process may hold this much more, or less, than after the first lap. The allocator's blocks must be the
// same but for what the C library keeps for a thread. Resident memory depends on how the blocks lie.
constexpr std::int64_t kBlocks = 16;
constexpr std::int64_t kBytes = 4096;
constexpr std::int64_t kResident_bytes = 8 << 20;

// At rest: this one, and the worker of the filter that lives as long as the soak.
constexpr int kThreads = 2;

constexpr double kSecondsPerMinute = 60;
constexpr int kMinutesPerHour = 60;

// An effect prints a line to standard output whenever it is made, so the results go to a copy of it.
std::FILE* results = nullptr;

bool separateResults() {
    const int copy = dup(STDOUT_FILENO);
    results = copy < 0 ? nullptr : fdopen(copy, "w");
    // The first line would allocate a buffer.
    return results != nullptr && std::freopen("/dev/null", "w", stdout) != nullptr &&
           std::setvbuf(stdout, nullptr, _IONBF, 0) == 0;
}

struct Share {
    const char* name;
    double part;
    double least_processed;  // part of the frames that came out
    std::unique_ptr<Lane> lane;
};

struct Arguments {
    int minutes = 6000;
    std::uint64_t seed = 1;
};

constexpr int kMostMinutes = 1'000'000;
constexpr int kHighestSeed = 1'000'000;

int numberOf(const char* text, int highest) {
    char* end = nullptr;
    const long number = std::strtol(text, &end, 10);
    if (end == text || *end != '\0' || number < 1 || number > highest) {
        std::fprintf(stderr, "soak: \"%s\" is no number from 1 to %d\n", text, highest);
        std::exit(2);
    }
    return static_cast<int>(number);
}

Arguments argumentsOf(int count, char** texts) {
    Arguments arguments;
    for (int i = 1; i < count; i += 2) {
        const std::string option = texts[i];
        if (i + 1 == count || (option != "--minutes" && option != "--seed")) {
            std::fputs("usage: soak [--minutes N] [--seed N]\n", stderr);
            std::exit(2);
        }
        if (option == "--minutes") arguments.minutes = numberOf(texts[i + 1], kMostMinutes);
        if (option == "--seed") {
            arguments.seed = static_cast<std::uint64_t>(numberOf(texts[i + 1], kHighestSeed));
        }
    }
    return arguments;
}

// Each lane plays on a thread of its own. A broken promise of any of them ends the soak.
void playLap(std::vector<Share>& shares, double audio_s) {
    std::vector<std::exception_ptr> failures(shares.size());
    {
        std::vector<std::jthread> threads;
        for (std::size_t i = 0; i < shares.size(); ++i) {
            threads.emplace_back([&, i] {
                try {
                    shares[i].lane->play(audio_s * shares[i].part);
                } catch (...) {
                    failures[i] = std::current_exception();
                }
            });
        }
    }
    for (std::size_t i = 0; i < shares.size(); ++i) {
        if (!failures[i]) continue;
        std::fprintf(stderr, "soak: in the lane \"%s\":\n", shares[i].name);
        std::rethrow_exception(failures[i]);
    }
}

HostCounts sumOf(const std::vector<Share>& shares) {
    HostCounts sum;
    for (const Share& share : shares) sum += share.lane->counts();
    return sum;
}

double mebibytes(std::int64_t bytes) {
    return static_cast<double>(bytes) / (1 << 20);
}

void printState(double hours, double wall_s, const HostCounts& counts, const ProcessState& state) {
    std::fprintf(results, "%8.2f %7.0f %12llu %12llu %9llu %9llu %8lld %11lld %9.1f %8d %6d\n", hours,
                 hours * 3600 / wall_s, static_cast<unsigned long long>(counts.pushed),
                 static_cast<unsigned long long>(counts.pulled),
                 static_cast<unsigned long long>(counts.given_up),
                 static_cast<unsigned long long>(counts.thrown_away),
                 static_cast<long long>(state.memory.blocks), static_cast<long long>(state.memory.bytes),
                 mebibytes(state.resident_bytes), state.threads, state.descriptors);
    std::fflush(results);
}

void checkFlat(const ProcessState& first, const ProcessState& now) {
    promise(std::abs(now.memory.blocks - first.memory.blocks) <= kBlocks,
            "the number of allocated blocks is flat");
    promise(std::abs(now.memory.bytes - first.memory.bytes) <= kBytes, "allocated memory is flat");
    promise(std::abs(now.resident_bytes - first.resident_bytes) <= kResident_bytes,
            "resident memory is flat");
    promise(now.threads == kThreads, "the number of threads is flat");
    promise(now.descriptors == first.descriptors, "the number of open files is flat");
}

void checkFrames(const test::DropLog& log, const HostCounts& counts) {
    log.checkAtRest();
    promise(counts.pushed == counts.pulled + counts.given_up + counts.thrown_away,
            "every frame came out, was given up or was thrown away");
    promise(counts.given_up == log.announced(), "a log line tells of every frame that was given up");
}

// A soak in which frames only pass by would prove nothing.
void checkEffects(const std::vector<Share>& shares) {
    for (const Share& share : shares) {
        promise(share.lane->processedPart() >= share.least_processed,
                "effects process a good part of the frames of every lane");
    }
}

// Memory is flat for a counter that sees nothing, too.
void checkCounter() {
    const std::int64_t blocks_before = test::liveMemory().blocks;
    void* volatile block = std::malloc(1);
    const std::int64_t blocks_now = test::liveMemory().blocks;
    std::free(block);
    promise(blocks_now == blocks_before + 1 && test::liveMemory().blocks == blocks_before,
            "the counter of allocated blocks sees a block come and go");
}

void printLanes(const std::vector<Share>& shares) {
    std::fprintf(results, "\n%-22s %8s %12s %12s %9s %9s %9s %9s %9s %9s\n", "lane", "hours", "pushed",
                 "pulled", "processed", "given up", "flushed", "flushes", "made", "streams");
    for (const Share& share : shares) {
        const HostCounts counts = share.lane->counts();
        std::fprintf(results, "%-22s %8.2f %12llu %12llu %7.1f %% %9llu %9llu %9llu %9llu %9llu\n",
                     share.name, counts.audio_s / 3600, static_cast<unsigned long long>(counts.pushed),
                     static_cast<unsigned long long>(counts.pulled), 100 * share.lane->processedPart(),
                     static_cast<unsigned long long>(counts.given_up),
                     static_cast<unsigned long long>(counts.thrown_away),
                     static_cast<unsigned long long>(counts.flushes),
                     static_cast<unsigned long long>(counts.filters),
                     static_cast<unsigned long long>(counts.streams));
    }
}

void soak(const Arguments& arguments) {
    test::makeNoiseTables();
    const test::DumpDirectory dumps;
    const test::DropLog log;
    checkCounter();
    std::vector<Share> shares;
    shares.push_back({"filter inside push", 0.35, 0.05, test::makeFilterLane(arguments.seed, false, log)});
    shares.push_back(
        {"filter with workers", 0.15, 0.05, test::makeFilterLane(arguments.seed + 1, true, log)});
    shares.push_back({"player", 0.35, 0.1, test::makePlayerLane(arguments.seed + 2)});
    shares.push_back({"library", 0.15, 1, test::makeLibraryLane(arguments.seed + 3)});

    const double lap_s = std::min(kMinutesPerHour, std::max(1, arguments.minutes / 10)) * kSecondsPerMinute;
    const double end_s = arguments.minutes * kSecondsPerMinute;
    std::fprintf(results, "%8s %7s %12s %12s %9s %9s %8s %11s %9s %8s %6s\n", "hours", "x real", "pushed",
                 "pulled", "given up", "flushed", "blocks", "bytes", "MiB held", "threads", "files");
    const auto start = std::chrono::steady_clock::now();
    ProcessState first;
    for (double played_s = 0; played_s < end_s;) {
        playLap(shares, lap_s);
        for (const std::string& name : dumps.names()) std::filesystem::remove(dumps.file(name));
        const bool is_first = played_s == 0;
        played_s += lap_s;
        const HostCounts counts = sumOf(shares);
        const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
        const ProcessState now = test::processState(kThreads);
        printState(played_s / 3600, wall.count(), counts, now);
        checkFrames(log, counts);
        if (is_first) first = now;
        checkFlat(first, now);
    }
    printLanes(shares);
    checkEffects(shares);
    std::fputs("\nNothing grew, and every frame is accounted for.\n", results);
}

}  // namespace

int main(int count, char** texts) {
    const Arguments arguments = argumentsOf(count, texts);
    // Otherwise the heap grows with each thread that happens to get another part of it.
    mallopt(M_ARENA_MAX, 1);
    av_log_set_level(AV_LOG_QUIET);
    if (!separateResults()) {
        std::fputs("soak: cannot copy standard output\n", stderr);
        return 2;
    }
    try {
        soak(arguments);
    } catch (const std::exception& failure) {
        std::fprintf(stderr, "soak: not kept: %s (seed %llu)\n", failure.what(),
                     static_cast<unsigned long long>(arguments.seed));
        return 1;
    }
    return 0;
}
