#include "bench_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>

namespace {

using namespace sonivex_tool;
using testing::HasSubstr;

BenchReport example() {
    return {.processor = "A Processor",
            .vectors = "AVX2, 4 doubles",
            .rows = {{{"surround", "MegaBass", 6, 480}, {.rounds = 7, .cpu_ms_per_s = 4.0}},
                     {{"normalizer", "", 1, 512}, {.rounds = 8, .cpu_ms_per_s = 0.5}}}};
}

TEST(BenchReport, TextListsTheSpeedAndTheCoreShareOfEachEffect) {
    EXPECT_EQ(benchText(example()),
              "A Processor; vectors: AVX2, 4 doubles\n"
              "effect      type        channels  times real time  of one core\n"
              "surround    MegaBass           6              250      0.400 %\n"
              "normalizer  -                  1             2000      0.050 %\n");
}

TEST(BenchReport, JsonContainsTheSameFigures) {
    const std::string text = benchJson(example());
    EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 1);
    const auto json = nlohmann::json::parse(text);
    EXPECT_EQ(json["processor"], "A Processor");
    EXPECT_EQ(json["vectors"], "AVX2, 4 doubles");
    EXPECT_EQ(json["sample_rate_hz"], 48000);
    ASSERT_EQ(json["rows"].size(), 2U);
    const auto& row = json["rows"][0];
    EXPECT_EQ(row["effect"], "surround");
    EXPECT_EQ(row["type"], "MegaBass");
    EXPECT_EQ(row["channels"], 6);
    EXPECT_EQ(row["frames_per_call"], 480);
    EXPECT_EQ(row["rounds"], 7);
    EXPECT_EQ(row["cpu_ms_per_s"], 4.0);
    EXPECT_EQ(row["times_real_time"], 250.0);
    EXPECT_EQ(row["core_percent"], 0.4);
    EXPECT_TRUE(json["rows"][1]["type"].is_null());
}

TEST(BenchReport, ReportsAnUnnamedProcessorAsUnknown) {
    BenchReport report = example();
    report.processor.clear();
    report.vectors.clear();
    EXPECT_THAT(benchText(report), HasSubstr("unknown processor; vectors: unknown\n"));
    const auto json = nlohmann::json::parse(benchJson(report));
    EXPECT_TRUE(json["processor"].is_null());
    EXPECT_TRUE(json["vectors"].is_null());
}

TEST(BenchReport, JsonIsValidIfTheProcessorsNameIsNotUtf8) {
    BenchReport report = example();
    report.processor = "\xe9";
    EXPECT_TRUE(nlohmann::json::accept(benchJson(report)));
}

}  // namespace
