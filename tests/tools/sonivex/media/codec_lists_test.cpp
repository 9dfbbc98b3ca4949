#include "codec_lists.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

namespace {

using namespace sonivex_tool;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const AVCodec& encoder(const char* name) {
    const AVCodec* found = avcodec_find_encoder_by_name(name);
    if (found == nullptr) throw std::runtime_error(std::string("no encoder ") + name);
    return *found;
}

std::vector<uint64_t> masks(const AVCodec& codec) {
    std::vector<uint64_t> list;
    for (const AVChannelLayout& layout : channelLayouts(codec)) list.push_back(layout.u.mask);
    return list;
}

TEST(CodecLists, HoldAllThatAnEncoderDeclares) {
    EXPECT_THAT(sampleFormats(encoder("flac")), UnorderedElementsAre(AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_S32));
    EXPECT_THAT(sampleRatesHz(encoder("ac3")), UnorderedElementsAre(32000, 44100, 48000));
    EXPECT_THAT(masks(encoder("alac")),
                testing::IsSupersetOf<uint64_t>({AV_CH_LAYOUT_MONO, AV_CH_LAYOUT_STEREO,
                                                 AV_CH_LAYOUT_SURROUND, AV_CH_LAYOUT_5POINT1_BACK}));
}

TEST(CodecLists, AreEmptyForAnEncoderThatDeclaresNoLimits) {
    EXPECT_THAT(sampleRatesHz(encoder("pcm_s16le")), IsEmpty());
    EXPECT_THAT(channelLayouts(encoder("pcm_s16le")), IsEmpty());
}

TEST(CodecLists, HoldWhatTheCodecItselfLimits) {
    EXPECT_THAT(sampleRatesHz(encoder("g722")), UnorderedElementsAre(16000));
    EXPECT_THAT(sampleRatesHz(encoder("g726")), UnorderedElementsAre(8000));
    EXPECT_THAT(masks(encoder("aac")),
                testing::IsSupersetOf<uint64_t>({AV_CH_LAYOUT_STEREO, AV_CH_LAYOUT_5POINT1_BACK}));
}

}  // namespace
