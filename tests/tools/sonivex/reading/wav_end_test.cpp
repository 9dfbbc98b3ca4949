#include "wav_end.h"

#include <gtest/gtest.h>

#include <string>

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
    // Returns a file whose chunks before the audio are `chunks`, and whose audio states its length.
    static std::string head(const std::string& chunks, uint32_t audio_bytes,
                            const std::string& form = "WAVE") {
        return "RIFF" + lengthText(0) + form + chunks + "data" + lengthText(audio_bytes) + "abcd";
    }
    std::optional<int64_t> stated(const std::string& chunks, uint32_t audio_bytes,
                                  const std::string& form = "WAVE") {
        test::writeFile(folder_.file("a.wav"), head(chunks, audio_bytes, form));
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

TEST_F(WavEnd, IsUnknownForOtherFiles) {
    EXPECT_EQ(stated("", 4, "AVI "), std::nullopt);
    test::writeFile(folder_.file("silent.wav"), "RIFF" + lengthText(0) + "WAVE" + chunk("LIST", "even"));
    EXPECT_EQ(statedWavBytes(folder_.file("silent.wav")), std::nullopt) << "it has no audio";
    EXPECT_EQ(statedWavBytes(folder_.file("none")), std::nullopt);
    EXPECT_EQ(statedWavBytes(folder_.path()), std::nullopt);
}

TEST_F(WavEnd, IsUnknownOnlyNextToPowersOfTwoAndAtZero) {
    for (const uint32_t known : {1U, 0x7FFEFFFFU, 0x80010000U, 0xC0000000U, 0xFFFEFFFFU}) {
        EXPECT_EQ(stated("", known), known);
        EXPECT_FALSE(sonivex_tool::isWavOfUnknownLength(head("", known))) << known;
    }
    for (const uint32_t placeholder : {0U, 0x7FFF0000U, 0x8000FFFFU, 0xFFFF0000U, 0xFFFFFFFFU}) {
        EXPECT_EQ(stated("", placeholder), std::nullopt) << placeholder;
        EXPECT_TRUE(sonivex_tool::isWavOfUnknownLength(head("", placeholder))) << placeholder;
    }
}

TEST_F(WavEnd, IsUnknownOnlyIfTheHeadReachesTheAudio) {
    const std::string whole = head(chunk("LIST", "odd"), 0xFFFFFFFF);
    const size_t length_end = whole.size() - 4;  // the first samples follow
    EXPECT_TRUE(sonivex_tool::isWavOfUnknownLength(whole.substr(0, length_end)));
    for (size_t size = 0; size < length_end; ++size)
        EXPECT_FALSE(sonivex_tool::isWavOfUnknownLength(whole.substr(0, size))) << size;
    EXPECT_FALSE(sonivex_tool::isWavOfUnknownLength("RF64" + whole.substr(4)));
}

}  // namespace
