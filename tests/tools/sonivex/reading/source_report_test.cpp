#include "source_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "source_info.h"

namespace {

using namespace sonivex_tool;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(SourceReport, SaysNothingOfACleanFile) {
    EXPECT_THAT(sentencesOn("in.wav", TimelineReport(), DamageReport()), IsEmpty());
    EXPECT_THAT(sentencesOn("in.wav", SourceInfo()), IsEmpty());
    EXPECT_FALSE(DamageReport().isDamaged());
}

TEST(SourceReport, TellsWhatWasLost) {
    const DamageReport damage = {
        .read_errors = 1, .decode_errors = 2, .filled_s = 0.0426, .missing_end_s = 3.2};
    EXPECT_TRUE(damage.isDamaged());
    EXPECT_DOUBLE_EQ(damage.lost_s(), 3.2426);
    EXPECT_THAT(
        sentencesOn("in.mkv", TimelineReport(), damage),
        ElementsAre("\"in.mkv\" is damaged: it cannot be read in 1 place; 2 packets failed to decode; "
                    "0.043 s of silence replace what is lost; it ends 3.200 s before its stated length"));
    EXPECT_THAT(sentencesOn("in.ogg", TimelineReport(), {.ends_prematurely = true}),
                ElementsAre("\"in.ogg\" is damaged: it is cut off"));
}

TEST(SourceReport, TellsIfTheLengthOfTheLossIsUnknown) {
    EXPECT_EQ(DamageReport{.ends_prematurely = true}.lossText(), "an unknown part");
    EXPECT_EQ((DamageReport{.filled_s = 1.0, .ends_prematurely = true}.lossText()), "an unknown part");
    EXPECT_EQ((DamageReport{.missing_end_s = 8.0, .ends_prematurely = true}.lossText()), "8.000 s");
    EXPECT_EQ(DamageReport{.decode_errors = 1}.lossText(), "an unknown part");
    EXPECT_EQ(DamageReport().lossText(), "0.000 s");
}

TEST(SourceReport, TellsWhatFollowingTheTimestampsChanged) {
    EXPECT_THAT(
        sentencesOn("a", {.lead_in_s = 1.5, .gaps = 2, .filled_s = 4.0, .overlaps = 1, .cut_s = 0.25}, {}),
        ElementsAre("the audio of \"a\" begins late; 1.500 s of silence precede it",
                    "the timestamps of \"a\" leave 2 gaps; 4.000 s of silence fill them",
                    "the timestamps of \"a\" overlap in 1 place; 0.250 s of audio were cut"));
}

TEST(SourceReport, TellsWhereTheTimestampsJump) {
    const auto ending = " by more than a gap or an overlap; the audio goes on there without a break";
    EXPECT_THAT(sentencesOn("a", {.jumps = 1}, {}),
                ElementsAre(std::string("the timestamps of \"a\" jump in 1 place") + ending));
    EXPECT_THAT(sentencesOn("a", {.jumps = 2}, {}),
                ElementsAre(std::string("the timestamps of \"a\" jump in 2 places") + ending));
}

TEST(SourceReport, NamesTheStreamAmongSeveral) {
    SourceInfo info;
    info.stream_number = 1;
    info.audio_streams = 3;
    info.language = "eng";
    EXPECT_THAT(sentencesOn("film.mkv", info),
                ElementsAre("audio stream 2 of 3 of \"film.mkv\" is read (eng, --stream 1)"));
}

}  // namespace
