// Checks the filter's threads: a filter adds one at most, and passes frames to it only through its queues.
#include <gtest/gtest.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
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
