#include "codec_lists.h"

namespace sonivex_tool {

std::vector<AVSampleFormat> sampleFormats(const AVCodec& codec) {
    std::vector<AVSampleFormat> list;
    for (const auto* item = codec.sample_fmts; item != nullptr && *item != AV_SAMPLE_FMT_NONE; ++item) {
        list.push_back(*item);
    }
    return list;
}

std::vector<int> sampleRatesHz(const AVCodec& codec) {
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
