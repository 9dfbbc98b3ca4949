#include "support/signals/signal_matchers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include "support/processes/temporary_folder.h"
#include "support/signals/wav_file.h"

namespace {

using test::closeSignal;
using test::Pcm;
using test::sameSignal;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using Floats = std::vector<float>;

constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float kInfinity = std::numeric_limits<float>::infinity();

// Directs the files to a folder of the test's own.
class SignalMatchers : public testing::Test {
  protected:
    SignalMatchers() {
        if (const char* const before = std::getenv(kVariable)) before_ = before;
        setenv(kVariable, folder_.path().c_str(), 1);
    }
    ~SignalMatchers() override {
        before_.empty() ? unsetenv(kVariable) : setenv(kVariable, before_.c_str(), 1);
    }

    std::string pathOf(const std::string& test, int number, const std::string& which) const {
        return folder_.file("SignalMatchers." + test + "." + std::to_string(number) + "." + which + ".wav");
    }
    test::Wav keptSignal(const std::string& test, int number, const std::string& which) const {
        const std::string path = pathOf(test, number, which);
        return test::parseWav(test::readFile(path), path);
    }

    static constexpr const char* kVariable = "SONIVEX_FAILED_SIGNALS";
    const test::TemporaryFolder folder_;

  private:
    std::string before_;
};

TEST_F(SignalMatchers, SucceedForEqualSignalsAndWriteNothing) {
    EXPECT_TRUE(sameSignal(Pcm{1, -2, 3, 4}, Pcm{1, -2, 3, 4}));
    EXPECT_TRUE(sameSignal(Pcm{}, Pcm{}));
    EXPECT_TRUE(sameSignal(Floats{0.5F, kNotANumber, -0.0F}, Floats{0.5F, kNotANumber, -0.0F}));
    EXPECT_TRUE(closeSignal(Pcm{1, 2}, Pcm{2, 1}, {.most = 1}));
    EXPECT_TRUE(closeSignal(Floats{1.0F, kInfinity}, Floats{1.25F, kInfinity}, {.most = 0.25}));
    EXPECT_TRUE(closeSignal(Floats{1.0F}, std::vector<double>{1.0 + 1e-12}, {.most = 1e-11}));
    EXPECT_THAT(folder_.names(), ElementsAre());
}

TEST_F(SignalMatchers, AFailureNamesTheDifferencesAndBothFiles) {
    const Pcm actual = {0, 1, 2, 3, 100, -5};
    const Pcm expected = {0, 1, 2, 4, 4, -5};
    const auto result = sameSignal(actual, expected);
    ASSERT_FALSE(result);
    const std::string test = "AFailureNamesTheDifferencesAndBothFiles";
    EXPECT_EQ(result.message(),
              "\nfirst difference: frame 1, channel 1: 3 instead of 4\n"
              "greatest error: 96 steps (-50.7 dB of full scale), frame 2, channel 0: 100 instead of 4\n"
              "different: 2 of 6 samples\n"
              "actual:   \"" +
                  pathOf(test, 1, "actual") + "\"\nexpected: \"" + pathOf(test, 1, "expected") + "\"\n");
}

TEST_F(SignalMatchers, TheFilesHoldThe16BitSignals) {
    const Pcm actual = {0, -32768, 32767, 3, 100, -5};
    const Pcm expected = {1, -32768, 32767, 3, 100, -5};
    ASSERT_FALSE(sameSignal(actual, expected, {.channels = 6, .rate_hz = 44100}));
    for (const auto& [which, samples] : {std::pair("actual", actual), std::pair("expected", expected)}) {
        const test::Wav wav = keptSignal("TheFilesHoldThe16BitSignals", 1, which);
        EXPECT_EQ(wav.channels, 6);
        EXPECT_EQ(wav.rate_hz, 44100U);
        EXPECT_EQ(wav.pcm, samples);
    }
}

TEST_F(SignalMatchers, TheFilesHoldFloatsRelativeToFullScale) {
    ASSERT_FALSE(sameSignal(Floats{0.25F, 1.5F}, Floats{0.25F, 1.0F}, {.channels = 1}));
    ASSERT_FALSE(sameSignal(Floats{16384.0F}, Floats{8192.0F}, {.channels = 1, .full_scale = 32768}));
    ASSERT_FALSE(closeSignal(Floats{0.5F}, std::vector<double>{0.75}, {.most = 0.2}, {.channels = 1}));
    const std::string test = "TheFilesHoldFloatsRelativeToFullScale";
    EXPECT_EQ(keptSignal(test, 1, "actual").floats, (Floats{0.25F, 1.5F}));
    EXPECT_EQ(keptSignal(test, 1, "expected").floats, (Floats{0.25F, 1.0F}));
    EXPECT_EQ(keptSignal(test, 2, "actual").floats, Floats{0.5F});
    EXPECT_EQ(keptSignal(test, 2, "expected").floats, Floats{0.25F});
    EXPECT_EQ(keptSignal(test, 3, "expected").floats, Floats{0.75F});
}

// Players need every field of the header, of which parseWav reads only some.
TEST_F(SignalMatchers, TheFilesAreCanonicalWavFiles) {
    ASSERT_FALSE(sameSignal(Pcm{1, 2}, Pcm{1, 3}));
    const std::string bytes = test::readFile(pathOf("TheFilesAreCanonicalWavFiles", 1, "actual"));
    using namespace std::string_literals;
    EXPECT_EQ(
        bytes,
        "RIFF\x28\0\0\0WAVEfmt \x10\0\0\0\1\0\2\0\x80\xBB\0\0\0\xEE\2\0\4\0\x10\0data\4\0\0\0\1\0\2\0"s);
}

TEST_F(SignalMatchers, FailForSignalsOfDifferentLengths) {
    const auto result = sameSignal(Pcm{1, 2, 3, 4}, Pcm{1, 2});
    EXPECT_FALSE(result);
    EXPECT_THAT(result.message(), HasSubstr("length: 4 samples instead of 2\n"));
    EXPECT_THAT(result.message(), Not(HasSubstr("first difference")));
    EXPECT_FALSE(closeSignal(Pcm{1}, Pcm{1, 2}, {.most = 9}));
    EXPECT_FALSE(closeSignal(Floats{}, Floats{0.0F}, {.most = 9}));
    EXPECT_EQ(folder_.names().size(), 6U);
}

TEST_F(SignalMatchers, FailForFloatsThatCompareEqualButHaveOtherBits) {
    const auto result = sameSignal(Floats{0.0F, 1.0F}, Floats{-0.0F, 1.0F});
    EXPECT_FALSE(result);
    EXPECT_THAT(result.message(), HasSubstr("first difference: frame 0, channel 0: 0 instead of -0\n"));
    EXPECT_THAT(result.message(), HasSubstr("greatest error: 0 steps, frame 0"));
}

TEST_F(SignalMatchers, FailForOneSampleBeyondTheTolerance) {
    const auto result = closeSignal(Pcm{0, 10, 20, 33}, Pcm{1, 11, 22, 31}, {.most = 1}, {.channels = 1});
    EXPECT_FALSE(result);
    EXPECT_THAT(result.message(), HasSubstr("first difference: frame 2, channel 0: 20 instead of 22\n"));
    EXPECT_THAT(result.message(), HasSubstr("different: 2 of 4 samples\n"));
    EXPECT_FALSE(closeSignal(Floats{0.5F}, Floats{0.25F}, {.most = 0.2}));
}

TEST_F(SignalMatchers, FailForNaNsAndInfinitiesWithinAnyTolerance) {
    constexpr double kAny = std::numeric_limits<double>::max();
    EXPECT_FALSE(closeSignal(Floats{kNotANumber}, Floats{0.0F}, {.most = kAny}));
    EXPECT_FALSE(closeSignal(Floats{kNotANumber}, Floats{kNotANumber}, {.most = kAny}));
    EXPECT_FALSE(closeSignal(Floats{-kInfinity}, Floats{kInfinity}, {.most = kAny}));
}

// Two silent samples and three others: two of these are exact.
TEST_F(SignalMatchers, FailIfTooFewSoundingSamplesAreWithinTheUsualError) {
    const Pcm actual = {0, 5, 6, 0, 7};
    const Pcm expected = {0, 5, 6, 0, 8};
    EXPECT_DOUBLE_EQ(test::shareWithin(0, actual, expected), 2.0 / 3.0);
    EXPECT_EQ(test::shareWithin(1, actual, expected), 1.0);
    EXPECT_EQ(test::shareWithin(0, Pcm(9), Pcm(9)), 1.0);
    EXPECT_TRUE(closeSignal(actual, expected, {.most = 1, .usual_share = 0.66}));
    const auto result = closeSignal(actual, expected, {.most = 1, .usual_share = 0.75}, {.channels = 1});
    EXPECT_FALSE(result);
    EXPECT_THAT(result.message(), HasSubstr("within 0: 66.6667 % of the samples instead of 75 %\n"));
    EXPECT_THAT(result.message(), HasSubstr("first difference: frame 4, channel 0: 7 instead of 8\n"));
    EXPECT_TRUE(closeSignal(actual, expected, {.most = 2, .usual = 1, .usual_share = 1}));
}

TEST_F(SignalMatchers, WriteAtMostEightPairsOfFilesPerTest) {
    for (int i = 0; i < test::kMaxPairs; ++i) EXPECT_FALSE(sameSignal(Pcm{1}, Pcm{2}));
    const auto result = sameSignal(Pcm{1}, Pcm{2});
    EXPECT_FALSE(result);
    EXPECT_THAT(result.message(), HasSubstr("no files: 8 pairs are written for a test at most\n"));
    EXPECT_EQ(folder_.names().size(), 16U);
}

TEST_F(SignalMatchers, CreateTheirFolder) {
    const std::string deep = folder_.file("a/b");
    setenv(kVariable, deep.c_str(), 1);
    EXPECT_FALSE(sameSignal(Pcm{1}, Pcm{2}));
    EXPECT_NE(test::readFile(deep + "/SignalMatchers.CreateTheirFolder.1.actual.wav"), "");
}

TEST_F(SignalMatchers, SayThatTheFilesCannotBeWritten) {
    const std::string file = folder_.file("file");
    test::writeFile(file, "");
    setenv(kVariable, file.c_str(), 1);
    const auto result = sameSignal(Pcm{1}, Pcm{2});
    EXPECT_FALSE(result);
    EXPECT_THAT(result.message(), HasSubstr("first difference: frame 0, channel 0: 1 instead of 2\n"));
    EXPECT_THAT(result.message(), HasSubstr("no files: "));
}

class SignalMatchersNames : public SignalMatchers, public testing::WithParamInterface<int> {};

INSTANTIATE_TEST_SUITE_P(Any, SignalMatchersNames, testing::Values(7));

TEST_P(SignalMatchersNames, HoldNoSlashes) {
    EXPECT_FALSE(sameSignal(Pcm{1}, Pcm{2}));
    EXPECT_THAT(folder_.names(), ElementsAre("Any_SignalMatchersNames.HoldNoSlashes_0.1.actual.wav",
                                             "Any_SignalMatchersNames.HoldNoSlashes_0.1.expected.wav"));
}

}  // namespace
