// Checks the filter's threads: a filter adds one at most, and passes frames to it only through its queues.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <set>
#include <thread>

#include "filter/dump/dump_directory.h"
#include "filter/faults/filter_under_test.h"

namespace test {
namespace {

using Vorlin::IQFFrame;

std::multiset<std::string> threadNames() {
    std::multiset<std::string> names;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream file(task.path() / "comm");
        std::string name;
        // A thread may have ended since the folder was listed.
        if (std::getline(file, name)) names.insert(name);
    }
    return names;
}

TEST(FilterThreads, AnActiveFilterAddsOneNamedThreadForAnyConversion) {
    {
        const FilterUnderTest first(Mode::kActive);
    }  // a sanitizer adds a thread of its own with the first one
    const auto before = threadNames();
    FilterUnderTest filter(Mode::kActive);
    filter.startNormalizer();
    for (const AVSampleFormat format : {AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_S64}) {
        for (int i = 0; i < 4; ++i) {
            const auto out = filter.pass(makeFrame({.format = format, .channels = 8}, noiseSource(1)));
            ASSERT_NE(out, nullptr);
        }
        EXPECT_NE(filter.field(Peer::kFilterGraph), nullptr)
            << "both graphs must exist while the test counts threads";
        EXPECT_NE(filter.field(Peer::kOutFilterGraph), nullptr);
        auto expected = before;
        expected.insert("SonivexFilter");
        EXPECT_EQ(threadNames(), expected);
        filter->flush();
    }
}

TEST(FilterThreads, AnInactiveFilterAddsNoThread) {
    const auto before = threadNames();
    FilterUnderTest filter;
    filter.startNormalizer();
    ASSERT_NE(filter.pass(makeFrame({.format = AV_SAMPLE_FMT_FLTP, .channels = 8}, noiseSource(1))), nullptr);
    EXPECT_EQ(threadNames(), before);
}

// Duration of the random use: long under the thread sanitizer, short elsewhere.
std::chrono::seconds soakTime() {
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
    return std::chrono::seconds(32);
#endif
#endif
    return std::chrono::seconds(3);
}

TEST(FilterThreads, SurviveRandomOptionsFlushesAndSeeks) {
    // Printed at once, because a sanitizer may end the process. SONIVEX_SEED repeats a run.
    const char* given = std::getenv("SONIVEX_SEED");
    const uint32_t seed =
        given != nullptr ? static_cast<uint32_t>(std::stoul(given)) : std::random_device{}();
    std::cerr << "seed " << seed << std::endl;
    std::mt19937 random(seed);
    const auto chance = [&random](unsigned one_in) { return random() % one_in == 0; };
    const char* const options[] = {
        R"({"enable_normalizer": true})",
        R"({"enable_surround": true})",
        R"({"enable_dialoguenhance": true})",
        R"({"enable_normalizer": false})",
        R"({"surround_mode": 2})",
        R"({"dialoguenhance_voice": 3.5})",
        R"({"surround_effect_type": "MegaBass", "surround_limiter": 0})",
        R"({"enable_dump": true})",
        R"({"enable_dialoguenhance": true, "enable_dump": true})",
    };
    const auto formats = allSampleFormats();
    const int channel_counts[] = {1, 2, 3, 6, 8};
    const int rates_hz[] = {16000, 44100, 48000, 96000};

    const DumpDirectory dumps;
    FilterUnderTest filter(Mode::kActive);
    filter.startNormalizer();
    filter->setDCA([&filter](int, const std::string&) { filter->setInvalid(true); });
    FrameSpec spec{.format = AV_SAMPLE_FMT_FLTP, .frames = 256};
    uint64_t pushed = 0;
    uint64_t pulled = 0;
    uint64_t flushes = 0;
    using Clock = std::chrono::steady_clock;
    const auto start = Clock::now();
    // A dumped frame is rare, so the run lasts until there is one, up to ten times the soak time.
    const auto is_over = [&](Clock::duration since) {
        return since >= 10 * soakTime() || (since >= soakTime() && !dumps.names().empty());
    };
    while (!is_over(Clock::now() - start)) {
        std::unique_ptr<IQFFrame> frame = makeFrame(spec, noiseSource(static_cast<uint32_t>(random())));
        pushed += filter->push(frame, 0) == 0 ? 1u : 0u;
        std::unique_ptr<IQFFrame> out;
        while (filter->pull(out, 0) == 0) {
            ++pulled;
            if (out) (void)out->getInfo().channels;
        }
        if (chance(5)) filter.options(options[random() % std::size(options)]);
        if (chance(4)) filter.options(R"({"enable_normalizer": true})");
        if (chance(3)) filter.options(R"({"enable_dump": false})");  // lets most frames skip the disk
        if (chance(50)) filter->setInvalid(chance(2));
        if (chance(20)) filter->setInvalid(false);
        if (chance(30))
            filter->setOption(Vorlin::filterPrototype::VIDEO_FPS_OPTION, chance(2) ? "25" : "120", "");
        if (chance(30)) filter->checkTimeConsume(random() % 60);
        if (chance(100)) {  // a seek
            filter->flush();
            ++flushes;
        }
        if (chance(150)) {  // another stream, with or without the flush that it requires
            spec = {.format = formats[random() % formats.size()],
                    .channels = channel_counts[random() % std::size(channel_counts)],
                    .rate_hz = rates_hz[random() % std::size(rates_hz)],
                    .frames = static_cast<int>(1 + random() % 2000)};
            if (chance(2)) filter->flush();
        }
        if (chance(3)) std::this_thread::sleep_for(std::chrono::microseconds(random() % 3000));
    }
    EXPECT_FALSE(dumps.names().empty());
    EXPECT_GT(pushed, 50u);
    EXPECT_GT(pulled, 20u);
    EXPECT_LE(pulled, pushed);
    EXPECT_GT(flushes, 0u);
}

// The worker writes the files, a flush closes them, and the switch changes while a frame is in the effect.
TEST(FilterThreads, DumpInputAndOutputInPairsDespiteSwitchChangesAndFlushes) {
    constexpr uintmax_t kFrameBytes = 2000 * 2 * sizeof(short);
    const DumpDirectory dumps;
    FilterUnderTest filter(Mode::kActive);
    std::vector<std::unique_ptr<IQFFrame>> out;
    uintmax_t dumped_bytes = 0;
    for (int session = 0; session < 12; ++session) {
        filter.startNormalizer();
        for (uint32_t i = 0; i < 12; ++i) {
            filter.pushPatiently(makeFrame({.frames = 2000}, noiseSource(i)), out);
            for (int turn = 0; turn < 5; ++turn) {
                filter.options(turn % 2 == 0 ? R"({"enable_dump": true})" : R"({"enable_dump": false})");
                std::this_thread::sleep_for(std::chrono::microseconds(150));
            }
        }
        filter->flush();
        std::map<std::string, uintmax_t> sizes;
        for (const std::string& name : dumps.names())
            sizes[name] = std::filesystem::file_size(dumps.file(name));
        for (auto [name, size] : sizes) {
            EXPECT_EQ(size % kFrameBytes, 0u) << name;
            dumped_bytes += size;
            const auto stage = name.find("_input_");
            if (stage == std::string::npos) continue;
            const auto output = std::string(name).replace(stage, std::strlen("_input_"), "_output_");
            EXPECT_EQ(sizes[output], size) << name;
        }
    }
    EXPECT_GT(dumped_bytes, 10 * kFrameBytes);
}

}  // namespace
}  // namespace test
