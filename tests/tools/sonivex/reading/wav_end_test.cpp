#include "wav_end.h"

#include <gtest/gtest.h>

#include <string_view>

#include "support/processes/temporary_folder.h"

namespace {

using sonivex_tool::statedWavBytes;

std::string lengthText(uint32_t bytes) {
    std::string text;
    for (unsigned i = 0; i < 4; ++i) text += static_cast<char>(bytes >> (8 * i) & 0xFFU);
    return text;
}

class WavEnd : public testing::Test {
  protected:
    // Writes a file whose chunks before the audio are `chunks`, and whose audio states its length.
    std::optional<int64_t> stated(const std::string& chunks, uint32_t audio_bytes,
                                  const std::string& form = "WAVE") {
        test::writeFile(folder_.file("a.wav"),
                        "RIFF" + lengthText(0) + form + chunks + "data" + lengthText(audio_bytes) + "abcd");
        return statedWavBytes(folder_.file("a.wav"));
    }
    static std::string chunk(const std::string& name, const std::string& contents) {
        const std::string padding = contents.size() % 2 == 1 ? std::string(1, '\0') : "";
        return name + lengthText(static_cast<uint32_t>(contents.size())) + contents + padding;
    }

    test::TemporaryFolder folder_;
};

TEST_F(WavEnd, IsThatOfTheChunkWithTheAudio) {
    EXPECT_EQ(stated("", 4), 4);
    EXPECT_EQ(stated("", 0x01020304), 0x01020304);
    EXPECT_EQ(stated(chunk("fmt ", std::string(16, 'x')), 100), 100);
}

TEST_F(WavEnd, FollowsChunksOfAnOddLength) {
    EXPECT_EQ(stated(chunk("LIST", "odd"), 100), 100);
    EXPECT_EQ(stated(chunk("LIST", "even"), 100), 100);
    EXPECT_EQ(stated(chunk("LIST", "odd") + chunk("bext", "x"), 100), 100);
}

TEST_F(WavEnd, IsUnknownForAPlaceholderAndForOtherFiles) {
    for (const uint32_t placeholder : {0U, 0x7FFF0000U, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ(stated("", placeholder), std::nullopt) << placeholder;
    EXPECT_EQ(stated("", 0x7FFEFFFF), 0x7FFEFFFF);
    EXPECT_EQ(stated("", 4, "AVI "), std::nullopt);
    test::writeFile(folder_.file("silent.wav"), "RIFF" + lengthText(0) + "WAVE" + chunk("LIST", "even"));
    EXPECT_EQ(statedWavBytes(folder_.file("silent.wav")), std::nullopt) << "it has no audio";
    EXPECT_EQ(statedWavBytes(folder_.file("none")), std::nullopt);
    EXPECT_EQ(statedWavBytes(folder_.path()), std::nullopt);
}

TEST_F(WavEnd, IsUnknownIfThePlaceOfTheLengthIsEmpty) {
    using namespace std::string_view_literals;
    using sonivex_tool::isWavOfUnknownLength;
    EXPECT_TRUE(isWavOfUnknownLength("RIFF\xFF\xFF\xFF\xFF"sv));
    EXPECT_TRUE(isWavOfUnknownLength("RIFF\0\0\0\0"sv));
    EXPECT_FALSE(isWavOfUnknownLength("RIFF\xFE\xFF\xFF\xFF"sv));
    EXPECT_FALSE(isWavOfUnknownLength("RIFF\0\0\0\x80"sv));
    EXPECT_FALSE(isWavOfUnknownLength("RF64\xFF\xFF\xFF\xFF"sv));
    for (const std::string_view cut : {""sv, "RIFF"sv, "RIFF\xFF\xFF\xFF"sv, "RIFF\0\0"sv})
        EXPECT_FALSE(isWavOfUnknownLength(cut));
}

}  // namespace
