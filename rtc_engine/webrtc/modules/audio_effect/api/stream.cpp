// Blocks of any length with a constant delay: the effect gets whole blocks, and their output leaves while the
// next block is being filled.

#include <algorithm>
#include <cstddef>

#include "effect_state.h"
#include "rounding.h"
#include "sample_rounding.h"

namespace {

bool areAllGiven(const float* const* planes, int count) {
    return planes != nullptr &&
           std::all_of(planes, planes + count, [](const float* plane) { return plane != nullptr; });
}

// Copies planar floats from frame `first` on into interleaved samples.
void interleave(const float* const* planes, int channels, int first, int frames, std::int16_t* samples) {
    for (int channel = 0; channel < channels; ++channel) {
        const float* const plane = planes[channel] + first;
        for (int i = 0; i < frames; ++i) samples[i * channels + channel] = sonivex::roundToInt16(plane[i]);
    }
}

void deinterleave(const std::int16_t* samples, int channels, int first, int frames, float* const* planes) {
    for (int channel = 0; channel < channels; ++channel) {
        float* const plane = planes[channel] + first;
        for (int i = 0; i < frames; ++i) plane[i] = sonivex::floatOf(samples[i * channels + channel]);
    }
}

}  // namespace

int sonivex_stream_float(SonivexEffect* effect, const float* const* in, float* const* out, int frames) {
    if (effect == nullptr || frames < 0 || frames > SONIVEX_MAX_CALL_FRAMES) return SONIVEX_ERROR_ARGUMENT;
    if (frames == 0) return SONIVEX_OK;
    const int channels_in = effect->settings.channels;
    const int channels_out = effect->output_channels;
    if (!areAllGiven(in, channels_in) || !areAllGiven(out, channels_out)) return SONIVEX_ERROR_ARGUMENT;

    const sonivex::RoundingToNearest rounding;
    const int block_frames = effect->timing.block_frames;
    // All channels of a piece are read before any is written, so that planes of `out` may be planes of `in`.
    for (int first = 0; first < frames;) {
        const int filled = effect->filled_frames;
        const int piece = std::min(frames - first, block_frames - filled);
        interleave(in, channels_in, first, piece,
                   effect->block_in.get() + std::ptrdiff_t{filled} * channels_in);
        deinterleave(effect->block_out.get() + std::ptrdiff_t{filled} * channels_out, channels_out, first,
                     piece, out);
        effect->filled_frames += piece;
        if (effect->filled_frames == block_frames) {
            effect->kind->process(effect->handle, effect->settings, effect->block_in.get(),
                                  effect->block_out.get(), block_frames);
            effect->filled_frames = 0;
        }
        first += piece;
    }
    return SONIVEX_OK;
}
