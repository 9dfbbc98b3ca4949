#include "channel_positions.h"

#include <algorithm>
#include <cassert>

namespace sonivex_tool {

FramePtr withChannelsOf(const AVFrame& frame, const AudioSpec& spec) {
    assert(frame.format == AV_SAMPLE_FMT_S16 && spec.format == AV_SAMPLE_FMT_S16);
    FramePtr out = makeFrame(spec, frame.nb_samples);
    const int channels = frame.ch_layout.nb_channels;
    const int common = std::min(channels, spec.channels());
    const auto* from = reinterpret_cast<const int16_t*>(frame.extended_data[0]);
    auto* to = reinterpret_cast<int16_t*>(out->extended_data[0]);
    for (int i = 0; i < frame.nb_samples; ++i) {
        std::copy_n(from, common, to);
        std::fill(to + common, to + spec.channels(), int16_t{0});
        from += channels;
        to += spec.channels();
    }
    return out;
}

}  // namespace sonivex_tool
