// The functions behind the common interface: how a handle of each kind of effect is made, used and freed.
#pragma once

#include <cstdint>

#include "effect_timing.h"

namespace sonivex {

/** Maximum number of channels of an effect. */
inline constexpr int kEffectMaxChannels = 8;

/** The settings with which an effect is made; each kind reads its own. */
struct EffectSettings {
    int channels = 0;  // of the input
    int sample_rate_hz = 0;
    int type = 0;     // surround
    int mode = 0;     // surround
    int limiter = 0;  // surround
    double voice_level = 0.0;
};

/** The functions of one kind of effect. */
struct EffectKind {
    /** @return a SonivexStatus: SONIVEX_OK if the settings are in range and supported. */
    int (*check)(const EffectSettings& settings);
    /** @return the effect's own handle. Returns null or throws std::bad_alloc when memory runs out. */
    void* (*create)(const EffectSettings& settings);
    void (*process)(void* handle, const EffectSettings& settings, const std::int16_t* in, std::int16_t* out,
                    int frames);
    void (*reset)(void* handle);
    void (*release)(void* handle);
    void (*set_voice_level)(void* handle, double voice_level);  // null: the kind has none
    EffectTiming (*timing)(const EffectSettings& settings);
    int (*output_channels)(const EffectSettings& settings);
};

/** @return the kind's record, or null if the build lacks it. [any, concurrent] real-time safe */
const EffectKind* findEffectKind(int kind);

}  // namespace sonivex
