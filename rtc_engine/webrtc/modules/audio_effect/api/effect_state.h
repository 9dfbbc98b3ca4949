// The record behind a SonivexEffect.
#pragma once

#include <cstdint>
#include <memory>

#include "effect_kinds.h"
#include "effect_timing.h"
#include "sonivex/effect.h"

/** One effect. The two pairs of buffers serve the two ways to process (sonivex/effect.h). */
struct SonivexEffect {
    ~SonivexEffect() {
        if (handle != nullptr) kind->release(handle);
    }

    const sonivex::EffectKind* kind = nullptr;
    sonivex::EffectSettings settings;
    sonivex::EffectTiming timing;
    int output_channels = 0;
    void* handle = nullptr;  // owned

    // Of sonivex_process_float: [SONIVEX_MAX_CALL_FRAMES][channels].
    std::unique_ptr<std::int16_t[]> call_in;
    std::unique_ptr<std::int16_t[]> call_out;

    // Of sonivex_stream_float: the block that is being filled, and the output of the block before, both
    // [block_frames][channels].
    std::unique_ptr<std::int16_t[]> block_in;
    std::unique_ptr<std::int16_t[]> block_out;
    int filled_frames = 0;
};
