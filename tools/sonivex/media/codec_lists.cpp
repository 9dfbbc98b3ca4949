#include "codec_lists.h"

#include "av_codec_compat.h"

namespace sonivex_tool {
namespace {

// The single rate of a codec, or 0 if it has several. The encoders of these codecs accept any rate, but their
// streams always play at this one.
int onlyRateHz(AVCodecID codec) {
    switch (codec) {
        case AV_CODEC_ID_ADPCM_G722:
            return 16'000;
        case AV_CODEC_ID_ADPCM_G726:
        case AV_CODEC_ID_ADPCM_G726LE:
        case AV_CODEC_ID_G723_1:
        case AV_CODEC_ID_GSM:
        case AV_CODEC_ID_GSM_MS:
            return 8'000;
        default:
            return 0;
    }
}

// Channel masks of the layouts that a codec has a code for. The encoders of these codecs declare none: they
// refuse other layouts, or write them in a way that players read as unnamed channels.
std::vector<uint64_t> layoutMasks(AVCodecID codec) {
    switch (codec) {
        case AV_CODEC_ID_OPUS:
            return {AV_CH_LAYOUT_MONO,    AV_CH_LAYOUT_STEREO,       AV_CH_LAYOUT_SURROUND,
                    AV_CH_LAYOUT_QUAD,    AV_CH_LAYOUT_5POINT0_BACK, AV_CH_LAYOUT_5POINT1_BACK,
                    AV_CH_LAYOUT_6POINT1, AV_CH_LAYOUT_7POINT1};
        case AV_CODEC_ID_AAC:
            return {AV_CH_LAYOUT_MONO,         AV_CH_LAYOUT_STEREO,  AV_CH_LAYOUT_SURROUND,
                    AV_CH_LAYOUT_4POINT0,      AV_CH_LAYOUT_QUAD,    AV_CH_LAYOUT_5POINT0_BACK,
                    AV_CH_LAYOUT_5POINT1_BACK, AV_CH_LAYOUT_7POINT1, AV_CH_LAYOUT_7POINT1_WIDE_BACK};
        default:
            return {};
    }
}

}  // namespace

std::vector<AVSampleFormat> sampleFormats(const AVCodec& codec) {
    const auto list = av::codecSampleFormats(codec);
    return {list.begin(), list.end()};
}

std::vector<int> sampleRatesHz(const AVCodec& codec) {
    if (const int only = onlyRateHz(codec.id); only > 0) return {only};
    const auto list = av::codecSampleRatesHz(codec);
    return {list.begin(), list.end()};
}

std::vector<AVChannelLayout> channelLayouts(const AVCodec& codec) {
    const auto declared = av::codecChannelLayouts(codec);
    std::vector<AVChannelLayout> list(declared.begin(), declared.end());
    if (!list.empty()) return list;
    for (const uint64_t mask : layoutMasks(codec.id)) {
        AVChannelLayout layout{};
        av_channel_layout_from_mask(&layout, mask);
        list.push_back(layout);
    }
    return list;
}

}  // namespace sonivex_tool
