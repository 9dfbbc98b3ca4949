#include "audio_decoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "failure.h"

namespace {

using namespace sonivex_tool;
using testing::StartsWith;

std::string refusalOf(AVCodecID codec) {
    AVFormatContext* file = avformat_alloc_context();
    AVStream& stream = *avformat_new_stream(file, nullptr);
    stream.codecpar->codec_type = AVMEDIA_TYPE_AUDIO;
    stream.codecpar->codec_id = codec;
    std::string refusal;
    try {
        const AudioDecoder decoder("a.mkv", stream);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::NoAudio);
        refusal = failure.what();
    }
    avformat_free_context(file);
    return refusal;
}

TEST(AudioDecoder, NamesACodecThatHasNoDecoder) {
    ASSERT_EQ(avcodec_find_decoder(AV_CODEC_ID_SMV), nullptr);
    EXPECT_EQ(refusalOf(AV_CODEC_ID_SMV), "cannot decode \"a.mkv\": there is no decoder for its audio (smv)");
}

TEST(AudioDecoder, RefusesAStreamWithoutChannels) {
    EXPECT_THAT(refusalOf(AV_CODEC_ID_PCM_S16LE), StartsWith("cannot decode \"a.mkv\": "));
}

}  // namespace
