#include "codec_lists.h"

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

}  // namespace

std::vector<AVSampleFormat> sampleFormats(const AVCodec& codec) {
    std::vector<AVSampleFormat> list;
    for (const auto* item = codec.sample_fmts; item != nullptr && *item != AV_SAMPLE_FMT_NONE; ++item) {
        list.push_back(*item);
    }
    return list;
}

std::vector<int> sampleRatesHz(const AVCodec& codec) {
    if (const int only = onlyRateHz(codec.id); only > 0) return {only};
    std::vector<int> list;
    for (const auto* item = codec.supported_samplerates; item != nullptr && *item != 0; ++item) {
        list.push_back(*item);
    }
    return list;
}

std::vector<AVChannelLayout> channelLayouts(const AVCodec& codec) {
    std::vector<AVChannelLayout> list;
    for (const auto* item = codec.ch_layouts; item != nullptr && item->nb_channels != 0; ++item) {
        list.push_back(*item);
    }
    return list;
}

}  // namespace sonivex_tool
