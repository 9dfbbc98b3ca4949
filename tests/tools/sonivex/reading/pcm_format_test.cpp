#include "pcm_format.h"

#include <gtest/gtest.h>

#include "support/processes/temporary_folder.h"

namespace {

using namespace sonivex_tool;
using Lines = std::vector<std::string>;

TEST(PcmChannelsOption, AcceptsOneOrTwoNumbersOnly) {
    EXPECT_EQ(parseChannels("6"), std::vector<int>{6});
    EXPECT_EQ(parseChannels("6,2"), (std::vector<int>{6, 2}));
    for (const char* text : {"", "0", "9", "-1", "12", "6,", ",6", "6,2,1", "6;2", "six", "6 ", "2.5"})
        EXPECT_TRUE(parseChannels(text).empty()) << text;
}

TEST(PcmFormatGuess, AssumesStereoAt48kHzAndReportsIt) {
    const PcmGuess guess = guessPcmFormat("some.pcm", {}, false);
    EXPECT_EQ(guess.format.channels, 2);
    EXPECT_EQ(guess.format.rate_hz, 48000);
    EXPECT_EQ(guess.assumptions, (Lines{"2 channels", "48000 Hz"}));
}

TEST(PcmFormatGuess, UsesTheHintsOfTheUser) {
    const PcmHints hints{{6, 1}, 44100};
    EXPECT_EQ(guessPcmFormat("some.pcm", hints, false).format.channels, 6);
    EXPECT_EQ(guessPcmFormat("some.pcm", hints, true).format.channels, 1);
    EXPECT_EQ(guessPcmFormat("some.pcm", hints, false).format.rate_hz, 44100);
    EXPECT_EQ(guessPcmFormat("sonivex_surround_output_12345678.pcm", hints, false).format.channels, 1);
    EXPECT_TRUE(guessPcmFormat("some.pcm", hints, true).assumptions.empty());
}

TEST(PcmFormatGuess, AppliesOneChannelCountToOutputsThatKeepIt) {
    const PcmHints hints{{6}, 48000};
    EXPECT_EQ(guessPcmFormat("sonivex_normalizer_output_12345678.pcm", hints, false).format.channels, 6);
    EXPECT_EQ(guessPcmFormat("sonivex_surround_input_12345678.pcm", hints, false).format.channels, 6);
    EXPECT_EQ(guessPcmFormat("sonivex_surround_output_12345678.pcm", hints, false).format.channels, 2);
}

TEST(PcmFormatGuess, DerivesSurroundsInputChannelsFromTheSizesOfBothFiles) {
    for (const int channels : {1, 2, 6, 8}) {
        const test::TemporaryFolder folder;
        const std::string input = folder.file("sonivex_surround_input_12345678.pcm");
        test::writeFile(input, std::string(static_cast<size_t>(channels) * 2 * 512, 'x'));
        EXPECT_EQ(guessPcmFormat(input, {{}, 48000}, false).assumptions, Lines{"2 channels"});
        test::writeFile(folder.file("sonivex_surround_output_12345678.pcm"), std::string(2 * 2 * 512, 'x'));
        const PcmGuess guess = guessPcmFormat(input, {{}, 48000}, false);
        EXPECT_EQ(guess.format.channels, channels);
        EXPECT_TRUE(guess.assumptions.empty());
    }
}

TEST(PcmFormatGuess, DerivesNothingFromSizesThatSuitNoChannelCount) {
    const test::TemporaryFolder folder;
    const std::string input = folder.file("sonivex_surround_input_12345678.pcm");
    test::writeFile(input, std::string(3 * 2 * 512, 'x'));
    for (const size_t output_bytes : {size_t{2 * 2 * 512}, size_t{0}}) {
        test::writeFile(folder.file("sonivex_surround_output_12345678.pcm"), std::string(output_bytes, 'x'));
        EXPECT_EQ(guessPcmFormat(input, {{}, 48000}, false).assumptions, Lines{"2 channels"}) << output_bytes;
    }
}

}  // namespace
