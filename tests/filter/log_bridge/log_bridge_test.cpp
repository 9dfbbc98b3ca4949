#include "sonivex/log_bridge.h"

#include <gtest/gtest.h>

#include <string>

#include "effect_log.h"
#include "support/logs/effect_log_capture.h"

namespace {

using test::EffectLogCapture;

TEST(LogBridge, JoinsPrefixAndFormattedMessage) {
    const EffectLogCapture log;
    ZubrelAem_logTrace("[prefix] ", "%d of %s\n", 3, "seven");
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0], "[prefix] 3 of seven\n");
    EXPECT_EQ(log.lines()[0].size(), 20U);
}

TEST(LogBridge, PrintsAPercentSignInThePrefixLiterally) {
    const EffectLogCapture log;
    ZubrelAem_logTrace("100 %s ", "done");
    EXPECT_EQ(log.lines().at(0), "100 %s done");
}

TEST(LogBridge, PassesAnEmptyLineToTheWriter) {
    const EffectLogCapture log;
    ZubrelAem_logTrace("", "%s", "");
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0], "");
}

TEST(LogBridge, CutsALongMessageToFillTheLine) {
    const EffectLogCapture log;
    ZubrelAem_logTrace("[p] ", "%s\n", std::string(3000, 'm').c_str());
    ASSERT_EQ(log.lines().size(), 1U);
    EXPECT_EQ(log.lines()[0], "[p] " + std::string(2047 - 4, 'm'));
    EXPECT_EQ(log.lines()[0].size(), 2047U);
}

TEST(LogBridge, KeepsAMessageThatJustFits) {
    const EffectLogCapture log;
    ZubrelAem_logTrace("[p] ", "%s", std::string(2043, 'm').c_str());
    EXPECT_EQ(log.lines().at(0), "[p] " + std::string(2043, 'm'));
}

TEST(LogBridge, APrefixThatFillsTheLineLeavesNoRoomForTheMessage) {
    for (const std::size_t prefix_bytes : {2046U, 2047U, 2048U}) {
        SCOPED_TRACE(prefix_bytes);
        const EffectLogCapture log;
        ZubrelAem_logTrace(std::string(prefix_bytes, 'p').c_str(), "message");
        const std::string expected = std::string(prefix_bytes, 'p') + "message";
        EXPECT_EQ(log.lines().at(0), expected.substr(0, 2047));
        EXPECT_EQ(log.lines().at(0).size(), 2047U);
    }
}

TEST(LogBridgeDeathTest, AbortsWithAMessageForAPrefixLongerThanTheLine) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const std::string prefix(2049, 'p');
    EXPECT_EXIT(ZubrelAem_logTrace(prefix.c_str(), "message"), testing::KilledBySignal(SIGABRT),
                "a prefix of 2049 bytes does not fit a line of 2048");
}

TEST(LogBridge, DropsALineWithoutAWriter) {
    const EffectLogCapture log;  // restores the writer
    logWriterFun = nullptr;
    testing::internal::CaptureStdout();
    ZubrelAem_logTrace("[p] ", "message\n");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_TRUE(log.lines().empty());
}

TEST(LogBridge, LogsNothingForANullPrefix) {
    const EffectLogCapture log;
    const char* volatile nothing = nullptr;  // volatile hides the null from the compiler's warnings
    ZubrelAem_logTrace(nothing, "message\n");
    EXPECT_TRUE(log.lines().empty());
}

TEST(LogBridge, TheDefaultWriterPrintsToStandardOutputAndAddsNothing) {
    testing::internal::CaptureStdout();
    ZubrelAem_logTrace("[p] ", "100%% %s", "done");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "[p] 100% done");
}

TEST(LogBridge, LogWriteReturnsTheNumberOfBytesPrinted) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(logWrite("five %d\n"), 8);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "five %d\n");
}

TEST(EffectLog, FormatsThePrefixOfAnEffect) {
    const EffectLogCapture log;
    sonivex::logEffectMessage("normalizer", 188, "[audio]::100% message\n");
    EXPECT_EQ(log.lines().at(0), "[ZubrelAem]: (normalizer: 188) [audio]::100% message\n");
}

TEST(EffectLog, CutsAPrefixThatIsTooLong) {
    const EffectLogCapture log;
    sonivex::logEffectMessage(std::string(400, 's').c_str(), 1, "message\n");
    EXPECT_EQ(log.lines().at(0), "[ZubrelAem]: (" + std::string(255 - 14, 's') + "message\n");
}

}  // namespace
