#include "channel_split_merge.h"

void ChannelSplit_f(const float* interleaved, int total_samples, float* const* buffers, int channels) {
    if (channels < 1) return;
    const int frames = total_samples / channels;
    for (int frame = 0; frame < frames; ++frame) {
        for (int channel = 0; channel < channels; ++channel) buffers[channel][frame] = *interleaved++;
    }
}

void ChannelMerge_f(float* interleaved, int frames, const float* const* buffers, int channels) {
    for (int frame = 0; frame < frames; ++frame) {
        for (int channel = 0; channel < channels; ++channel) *interleaved++ = buffers[channel][frame];
    }
}
