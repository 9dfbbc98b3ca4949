#include "stream_plan.h"

#include <gtest/gtest.h>

#include "container_choice.h"
#include "failure.h"

namespace {

using namespace sonivex_tool;

StreamFacts stream(AVMediaType kind, AVCodecID codec) {
    StreamFacts facts;
    facts.kind = kind;
    facts.codec = codec;
    facts.codec_name = avcodec_get_name(codec);
    return facts;
}

StreamFacts rendered() {
    StreamFacts facts = stream(AVMEDIA_TYPE_AUDIO, AV_CODEC_ID_AC3);
    facts.is_rendered = true;
    return facts;
}

StreamFacts cover() {
    StreamFacts facts = stream(AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_PNG);
    facts.is_picture = true;
    return facts;
}

std::vector<StreamFacts> film() {
    return {stream(AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_H264),
            rendered(),
            stream(AVMEDIA_TYPE_AUDIO, AV_CODEC_ID_AAC),
            stream(AVMEDIA_TYPE_SUBTITLE, AV_CODEC_ID_SUBRIP),
            stream(AVMEDIA_TYPE_SUBTITLE, AV_CODEC_ID_MOV_TEXT),
            stream(AVMEDIA_TYPE_ATTACHMENT, AV_CODEC_ID_TTF),
            cover()};
}

// One letter for each stream: R rendered, C copied, - left out, ! left out with a note.
std::string fates(const std::vector<StreamFacts>& streams, OutputSettings settings) {
    std::string letters;
    for (const StreamPlan& plan : planStreams(streams, *chooseContainer(settings), settings)) {
        if (plan.fate == StreamFate::Rendered) letters += 'R';
        if (plan.fate == StreamFate::Copied) letters += 'C';
        if (plan.fate == StreamFate::LeftOut) letters += plan.is_noted ? '!' : '-';
        EXPECT_EQ(plan.reason.empty(), plan.fate != StreamFate::LeftOut);
    }
    return letters;
}

TEST(StreamPlan, AFilmGetsWhatItsContainerHolds) {
    EXPECT_EQ(fates(film(), {.path = "a.mkv"}), "CR!C!CC");
    EXPECT_EQ(fates(film(), {.path = "a.mp4"}), "CR!!C!C");
    EXPECT_EQ(fates(film(), {.path = "a.mov"}), "CR!!C!!");
    EXPECT_EQ(fates(film(), {.path = "a.ts"}), "CR!!!!!");
}

TEST(StreamPlan, OtherSoundIsKeptOnRequest) {
    EXPECT_EQ(fates(film(), {.path = "a.mkv", .keep_other_audio = true}), "CRCC!CC");
    EXPECT_EQ(fates(film(), {.path = "a.mka", .keep_other_audio = true}), "-RC---C");
    EXPECT_EQ(fates(film(), {.path = "a.flac", .keep_other_audio = true}), "-R!---C");
}

TEST(StreamPlan, AnAudioFileGetsTheCoverOnly) {
    EXPECT_EQ(fates(film(), {.path = "a.m4a"}), "-R----C");
    EXPECT_EQ(fates(film(), {.path = "a.mp3"}), "-R----C");
    EXPECT_EQ(fates(film(), {.path = "a.wav"}), "-R----!");
    EXPECT_EQ(fates(film(), {.path = "a.mkv", .audio_only = true}), "-R-----");
}

TEST(StreamPlan, ACoverMakesNoFilm) {
    const std::vector<StreamFacts> song = {rendered(), cover()};
    EXPECT_FALSE(makesFilm(song, *chooseContainer({.path = "a.mkv"}), {.path = "a.mkv"}));
    EXPECT_TRUE(makesFilm(film(), *chooseContainer({.path = "a.mkv"}), {.path = "a.mkv"}));
    for (const char* name : {"a.mka", "a.m4a", "a.m4b", "a.ogg", "a.wma", "a.flac", "a.wav", "a.mp3"})
        EXPECT_FALSE(makesFilm(film(), *chooseContainer({.path = name}), {.path = name})) << name;
    for (const char* name : {"a.mp4", "a.m4v", "a.MOV", "a.avi", "a.ts", "a.m2ts", "a.webm", "a.mpg"})
        EXPECT_TRUE(makesFilm(film(), *chooseContainer({.path = name}), {.path = name})) << name;
}

TEST(StreamPlan, AFilmWithoutItsPictureIsRefused) {
    const auto refusal = [](const char* name) {
        try {
            planStreams(film(), *chooseContainer({.path = name}), {.path = name});
        } catch (const Failure& failure) {
            return failure.exitCode();
        }
        return ExitCode::Success;
    };
    EXPECT_EQ(refusal("a.webm"), ExitCode::OutputFormat);
    EXPECT_EQ(refusal("a.mkv"), ExitCode::Success);
}

TEST(StreamPlan, AFilmGetsNeitherDataNorStreamsOfAnUnknownKind) {
    const std::vector<StreamFacts> streams = {stream(AVMEDIA_TYPE_VIDEO, AV_CODEC_ID_H264), rendered(),
                                              stream(AVMEDIA_TYPE_DATA, AV_CODEC_ID_BIN_DATA),
                                              stream(AVMEDIA_TYPE_UNKNOWN, AV_CODEC_ID_NONE)};
    const auto plans = planStreams(streams, *chooseContainer({.path = "a.mkv"}), {.path = "a.mkv"});
    EXPECT_EQ(fates(streams, {.path = "a.mkv"}), "CR!!");
    EXPECT_EQ(plans[2].reason, "data streams are not copied");
    EXPECT_EQ(plans[3].reason, "its kind is unknown");
}

TEST(StreamPlan, NamesAnUnknownCodecByTheLettersOfItsContainer) {
    AVFormatContext* file = avformat_alloc_context();
    for (const uint32_t tag : {MKTAG('a', 'b', 'c', 'd'), 0U}) {
        AVCodecParameters& parameters = *avformat_new_stream(file, nullptr)->codecpar;
        parameters.codec_type = AVMEDIA_TYPE_VIDEO;
        parameters.codec_tag = tag;
    }
    const auto facts = factsOf(*file, 0);
    avformat_free_context(file);
    EXPECT_EQ(facts[0].codec_name, "abcd");
    EXPECT_EQ(facts[1].codec_name, "unknown");
}

TEST(StreamPlan, DescribesAStreamByNumberKindCodecAndLanguage) {
    StreamFacts subtitle = stream(AVMEDIA_TYPE_SUBTITLE, AV_CODEC_ID_SUBRIP);
    EXPECT_EQ(describeStream(subtitle, 3), "stream 3 (subtitle, subrip)");
    subtitle.language = "eng";
    EXPECT_EQ(describeStream(subtitle, 3), "stream 3 (subtitle, subrip, eng)");
    EXPECT_EQ(describeStream(cover(), 0), "stream 0 (picture, png)");
}

}  // namespace
