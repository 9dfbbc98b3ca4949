// Every function of the common interface that its header calls real-time safe.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include "common_effects.h"
#include "sonivex/version.h"

namespace test {

/** Buffers for calls of any length, made before anything is watched. */
struct CallBuffers {
    static constexpr int kMaxChannels = 8;

    Pcm samples = bursts(1, kMaxChannels* SONIVEX_MAX_CALL_FRAMES);
    Pcm samples_out = Pcm(samples.size());
    std::vector<float> floats = noiseFloats(2, samples.size(), 1.5F);
    Planes planes = Planes(kMaxChannels, noiseFloats(3, SONIVEX_MAX_CALL_FRAMES, 1.5F));
};

/** Calls every function that is real-time safe, with the limiters at work and with wrong arguments. */
inline void makeEveryCall(SonivexEffect* effect, CallBuffers& buffers) {
    std::array<const float*, CallBuffers::kMaxChannels> in{};
    std::array<float*, CallBuffers::kMaxChannels> out{};
    for (std::size_t i = 0; i < out.size(); ++i) {
        out[i] = buffers.planes[i].data();
        in[i] = out[i];
    }
    for (const int frames : {512, 1, 100, 513, 2048, SONIVEX_MAX_CALL_FRAMES, 0, -1}) {
        sonivex_stream_float(effect, in.data(), out.data(), frames);
    }
    sonivex_reset(effect);
    sonivex_set_voice_level(effect, 3.0);
    for (const int frames : {512, 1, 100, 513, 2048, SONIVEX_MAX_CALL_FRAMES, 0, -1}) {
        sonivex_process_int16(effect, buffers.samples.data(), buffers.samples_out.data(), frames);
        sonivex_process_float(effect, buffers.floats.data(), buffers.floats.data(), frames);
        sonivex_latency_frames(effect, frames);
    }
    sonivex_reset(effect);
    sonivex_stream_float(effect, nullptr, nullptr, 1);
    sonivex_stream_latency_frames(effect);
    sonivex_tail_frames(effect);
    sonivex_block_frames(effect);
    sonivex_input_channels(effect);
    sonivex_output_channels(effect);
    sonivex_status_text(SONIVEX_ERROR_GAPS);
    sonivex_version();
    sonivex_has_effect(SONIVEX_DIALOGUE);
}

}  // namespace test
