#include "vorlin/log.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/logs/host_log_capture.h"

namespace Vorlin {
namespace {

using test::HostLogCapture;
using testing::ElementsAre;

class HostLog : public testing::Test {
  protected:
    void TearDown() override {
        setLogLevel(LOG_QUIET);
        setLogSink({});
    }

    // Leaves the threshold as it is.
    void collectLines() { log_.emplace(HostLogCapture::Tags::kKept, std::nullopt); }
    std::vector<std::string> lines() const { return log_->lines(); }

  private:
    std::optional<HostLogCapture> log_;
};

TEST_F(HostLog, IsQuietByDefault) {
    collectLines();
    __log_print(LOG_ERROR, "tag", "lost");
    EXPECT_TRUE(lines().empty());
}

TEST_F(HostLog, PassesTheThresholdAndMoreUrgentLevels) {
    collectLines();
    setLogLevel(LOG_WARNING);
    __log_print(LOG_ERROR, "tag", "e");
    __log_print(LOG_WARNING, "tag", "w");
    __log_print(LOG_INFO, "tag", "i");
    __log_print(LOG_DEBUG, "tag", "d");
    EXPECT_THAT(lines(), ElementsAre("16 tag: e", "24 tag: w"));
}

TEST_F(HostLog, FormatsAMessageOfAnyLengthAndDropsItsNewline) {
    collectLines();
    setLogLevel(LOG_DEBUG);
    const std::string long_text(100'000, 'x');
    __log_print(LOG_INFO, "tag", "%d %s\n", 7, "seven");
    __log_print(LOG_INFO, "tag", "%s", long_text.c_str());
    __log_print(LOG_INFO, "tag", "two\n\n");
    EXPECT_THAT(lines(), ElementsAre("32 tag: 7 seven", "32 tag: " + long_text, "32 tag: two\n"));
}

TEST_F(HostLog, AcceptsANullTagAndIgnoresANullFormat) {
    collectLines();
    setLogLevel(LOG_DEBUG);
    void (*const log_unchecked)(int, const char*, const char*, ...) = &__log_print;  // skips format checks
    __log_print(LOG_INFO, nullptr, "text");
    log_unchecked(LOG_INFO, "tag", nullptr);
    EXPECT_THAT(lines(), ElementsAre("32 : text"));
}

TEST_F(HostLog, WritesToStandardErrorByDefault) {
    setLogLevel(LOG_INFO);
    collectLines();
    setLogSink({});
    testing::internal::CaptureStderr();
    __log_print(LOG_INFO, "tag", "hello %d\n", 1);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "tag: hello 1\n");
    EXPECT_TRUE(lines().empty());
}

TEST_F(HostLog, AllowsASinkToLogAndToReplaceItself) {
    setLogLevel(LOG_DEBUG);
    setLogSink([this](int level, const std::string&, const std::string&) {
        collectLines();
        if (level == LOG_ERROR) __log_print(LOG_INFO, "sink", "inner");
    });
    __log_print(LOG_ERROR, "tag", "outer");
    EXPECT_THAT(lines(), ElementsAre("32 sink: inner"));
}

TEST_F(HostLog, SurvivesASinkThatThrows) {
    setLogLevel(LOG_DEBUG);
    setLogSink([](int, const std::string&, const std::string&) { throw std::runtime_error("sink"); });
    EXPECT_NO_THROW(__log_print(LOG_ERROR, "tag", "text"));
}

TEST_F(HostLog, CanBeCalledAndChangedFromManyThreads) {
    setLogLevel(LOG_DEBUG);
    constexpr int kMessages = 2000;
    std::atomic<int> received{0};
    const LogSink count = [&received](int, const std::string&, const std::string&) { ++received; };
    setLogSink(count);
    std::vector<std::thread> writers;
    for (int i = 0; i < 3; ++i) {
        writers.emplace_back([] {
            for (int n = 0; n < kMessages; ++n) __log_print(LOG_INFO, "tag", "%d", n);
        });
    }
    for (int n = 0; n < kMessages; ++n) {
        setLogSink(count);
        setLogLevel(n % 2 == 0 ? LOG_DEBUG : LOG_INFO);
    }
    for (auto& writer : writers) writer.join();
    EXPECT_EQ(received, 3 * kMessages);
}

}  // namespace
}  // namespace Vorlin
