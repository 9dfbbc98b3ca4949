#include "tools/sonivex/audio_samples.h"

namespace test {

using namespace sonivex_tool;

AudioSpec floatSpec(int channels, int rate_hz) {
    AudioSpec spec;
    spec.format = AV_SAMPLE_FMT_FLT;
    spec.rate_hz = rate_hz;
    spec.layout = defaultLayout(channels);
    return spec;
}

FramePtr floatFrame(int channels, int frames, const std::function<float(int, int)>& value, int rate_hz) {
    FramePtr frame = makeFrame(floatSpec(channels, rate_hz), frames);
    auto* samples = reinterpret_cast<float*>(frame->data[0]);
    for (int i = 0; i < frames; ++i) {
        for (int c = 0; c < channels; ++c) *samples++ = value(i, c);
    }
    return frame;
}

FramePtr countingFrame(int first, int frames) {
    FramePtr frame = floatFrame(1, frames, [first](int i, int) { return static_cast<float>(first + i); });
    frame->pts = first;
    return frame;
}

std::vector<float> floatsOf(const AVFrame& frame) {
    const auto* samples = reinterpret_cast<const float*>(frame.data[0]);
    return {samples, samples + frame.nb_samples * frame.ch_layout.nb_channels};
}

}  // namespace test
