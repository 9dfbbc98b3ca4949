#include "batch_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace {

using sonivex_tool::BatchOutcome;
using sonivex_tool::BatchReport;
using sonivex_tool::BatchResult;

BatchResult failure() {
    BatchResult result;
    result.outcome = BatchOutcome::Failed;
    result.input = "a.wav";
    result.output = "out/a.wav";
    result.exit_code = 3;
    result.error = "cannot open \"a.wav\": no such file";
    return result;
}

TEST(BatchReport, SaysWhatFailedAndWhy) {
    BatchReport report;
    report.rendered = 2;
    report.skipped = 1;
    report.not_begun = 4;
    report.failures = {failure()};
    report.seconds = 61.0;
    EXPECT_EQ(asText(report),
              "rendered  2 files in 1:01\n"
              "skipped   1 file, finished before\n"
              "open      4 files\n"
              "failed    1 file\n"
              "  a.wav: cannot open \"a.wav\": no such file (exit code 3)\n");
}

TEST(BatchReport, NamesDamagedInputsWhoseOutputsAreComplete) {
    BatchReport report;
    BatchResult result = failure();
    result.outcome = BatchOutcome::Rendered;
    result.is_damaged = true;
    result.error = "2 packets lost";
    report.rendered = 1;
    report.damaged = {result};
    EXPECT_EQ(asText(report),
              "rendered  1 file in 0:00\n"
              "damaged   1 file, rendered all the same\n"
              "  a.wav: 2 packets lost\n");
}

TEST(BatchReport, WritesOneJsonObjectPerFile) {
    BatchResult result = failure();
    result.report = "{\"effect\":\"surround\"}\n";
    const std::string line = asJson(result);
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    const auto object = nlohmann::json::parse(line);
    EXPECT_EQ(object.at("result"), "failed");
    EXPECT_EQ(object.at("exit_code"), 3);
    EXPECT_EQ(object.at("error"), result.error);
    EXPECT_EQ(object.at("damaged"), false);
    EXPECT_EQ(object.at("report").at("effect"), "surround");
    result.report = "{\"effect\":";
    EXPECT_TRUE(nlohmann::json::parse(asJson(result)).at("report").is_null());
}

TEST(BatchReport, TellsProgramsThatACompleteOutputOfADamagedInputIsNoFailure) {
    BatchResult result = failure();
    result.outcome = BatchOutcome::Rendered;
    result.is_damaged = true;
    const auto object = nlohmann::json::parse(asJson(result));
    EXPECT_EQ(object.at("damaged"), true);
    EXPECT_TRUE(object.at("error").is_null());
}

TEST(BatchReport, ReplacesBytesThatAreNotUtf8) {
    BatchResult result = failure();
    result.input = "caf\xe9.wav";
    EXPECT_EQ(nlohmann::json::parse(asJson(result)).at("input"), "caf\xEF\xBF\xBD.wav");
}

}  // namespace
