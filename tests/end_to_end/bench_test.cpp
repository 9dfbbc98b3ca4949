// Runs `sonivex bench`, which reports the cost of the effects on this machine.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <nlohmann/json.hpp>
#include <string>
#include <thread>
#include <vector>

#include "support/processes/process.h"

namespace {

using testing::HasSubstr;

std::vector<std::string> command(const std::vector<std::string>& arguments) {
    std::vector<std::string> whole = {SONIVEX_PROGRAM, "bench"};
    whole.insert(whole.end(), arguments.begin(), arguments.end());
    return whole;
}

test::ProcessResult bench(const std::vector<std::string>& arguments) {
    return test::runProcess(command(arguments));
}

TEST(BenchCommand, MeasuresEveryEffectAndLayout) {
    const auto result = bench({"--seconds", "0.1", "--json"});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    EXPECT_EQ(result.err, "");
    const auto json = nlohmann::json::parse(result.out);
    EXPECT_NE(json["vectors"].get<std::string>(), "");
    EXPECT_EQ(json["rows"].size(), 11U);
    for (const auto& row : json["rows"]) {
        EXPECT_GE(row["rounds"], 3) << row;
        EXPECT_GT(row["cpu_ms_per_s"], 0.0) << row;
        EXPECT_NEAR(row["times_real_time"].get<double>() * row["core_percent"].get<double>(), 100.0, 1e-6)
            << row;
    }
    const auto cost_of = [&](const std::string& effect, int channels) {
        for (const auto& row : json["rows"]) {
            if (row["effect"] == effect && row["channels"] == channels)
                return row["cpu_ms_per_s"].get<double>();
        }
        return 0.0;
    };
    // These costs are far enough apart for the order to hold on any machine.
    EXPECT_GT(cost_of("surround", 8), cost_of("surround", 2));
    EXPECT_GT(cost_of("surround", 8), cost_of("normalizer", 1));
}

TEST(BenchCommand, MeasuresOnlyTheRequestedEffectAndPrintsATable) {
    const auto result = bench({"--effect", "dialogue", "--seconds", "0.1"});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    EXPECT_THAT(result.out, HasSubstr("; vectors: "));
    EXPECT_THAT(result.out, HasSubstr("times real time  of one core\ndialogue    -                  2 "));
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 3);
}

TEST(BenchCommand, RejectsWrongUsageWithOneLineOnStandardError) {
    struct Case {
        std::vector<std::string> arguments;
        int exit_code;
    };
    for (const Case& bad :
         {Case{{"--effect", "reverb"}, 2}, Case{{"--seconds", "0"}, 2}, Case{{"--seconds", "nan"}, 2},
          Case{{"--seconds", "3601"}, 2}, Case{{"--seconds", "soon"}, 2}, Case{{"FILE"}, 2},
          Case{{"--plugin", "/nowhere.so"}, 10}, Case{{"--plugin", SONIVEX_PLUGIN_WITHOUT_EFFECTS}, 11},
          Case{{"--plugin", SONIVEX_PLUGIN_WITHOUT_EFFECTS, "--effect", "surround"}, 11}}) {
        const auto result = bench(bad.arguments);
        EXPECT_EQ(result.exit_code, bad.exit_code) << bad.arguments.back() << ": " << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.find("sonivex: "), 0U);
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1) << result.err;
    }
}

TEST(BenchCommand, StopsBetweenTwoRoundsWhenInterrupted) {
    test::Process process(command({"--effect", "normalizer", "--seconds", "3600"}));
    while (process.isRunning() && !process.handles(SIGINT)) {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    ASSERT_TRUE(process.isRunning());
    process.send(SIGINT);
    const auto result = process.wait();
    EXPECT_EQ(result.exit_code, 130);
    EXPECT_EQ(result.out, "");
}

}  // namespace
