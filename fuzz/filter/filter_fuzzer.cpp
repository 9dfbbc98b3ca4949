// Drives filters with the calls of a random host, which the bytes decide (tests/random_host/): pushes of
// frames of any format, layout, rate, length and content, also of null, empty and false ones; pulls, options,
// flushes, guard calls, copies and ends of filters. The host checks each answer. There are two programs of
// this source:
//
//     fuzz_filter          filters that work inside `push`; a model foretells the fate of every frame
//     fuzz_filter_worker   filters with workers as well, which the system schedules
//
#include <cstdint>
#include <cstdio>
#include <filesystem>

extern "C" {
#include <libavutil/log.h>
}

#include "filter/dump/dump_directory.h"
#include "random_host/promise.h"
#include "random_host/random_host.h"
#include "support/promise.h"

namespace {

#ifdef SONIVEX_FUZZ_WORKERS
constexpr auto kWorkers = test::Habits::Workers::kSometimes;
constexpr int kLongestWait_us = 300;
#else
constexpr auto kWorkers = test::Habits::Workers::kNever;
constexpr int kLongestWait_us = 0;
#endif
constexpr test::Habits kHabits{
    .workers = kWorkers, .longest_frames = 600, .may_dump = true, .longest_wait_us = kLongestWait_us};

void play(const std::uint8_t* bytes, std::size_t size) {
    const test::DropLog log;
    test::GivenBytes given({bytes, size});
    test::RandomHost host(given, kHabits, log);
    while (!given.isOver()) host.step();
    host.finish();
    log.checkAtRest();
    fuzz::require(log.givenUp() == host.counts().given_up, "the host knows of every lost frame");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    static const test::DumpDirectory dumps;
    static const bool is_quiet = [] {
        av_log_set_level(AV_LOG_QUIET);
        // An effect prints a line whenever it is made.
        return std::freopen("/dev/null", "w", stdout) != nullptr;
    }();
    fuzz::require(is_quiet, "standard output can be turned off");
    try {
        play(bytes, size);
    } catch (const test::BrokenPromise& broken) {
        fuzz::require(false, broken.what());
    }
    for (const std::string& name : dumps.names()) std::filesystem::remove(dumps.file(name));
    return 0;
}
