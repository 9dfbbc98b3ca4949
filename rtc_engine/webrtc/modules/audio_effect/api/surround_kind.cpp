#include "kind_records.h"
#include "sonivex/status.h"
#include "sonivex/surround.h"
#include "surround_control.h"

namespace sonivex {
namespace {

constexpr int kMegaBass = 13;  // the type
constexpr int kEars = 2;

int check(const EffectSettings& settings) {
    if (settings.mode < 1 || settings.mode > 3) return SONIVEX_ERROR_ARGUMENT;
    if (settings.limiter != 0 && settings.limiter != 1) return SONIVEX_ERROR_ARGUMENT;
    if (settings.sample_rate_hz != 44100 && settings.sample_rate_hz != 48000)
        return SONIVEX_ERROR_UNSUPPORTED;
    // A handle for mono would read two channels.
    if (settings.channels == 1 || !hasSurroundLayout(settings.type, settings.channels)) {
        return SONIVEX_ERROR_UNSUPPORTED;
    }
    return SONIVEX_OK;
}

void* create(const EffectSettings& settings) {
    return createSurround(settings.channels, settings.sample_rate_hz, settings.type, settings.mode,
                          settings.limiter);
}

void process(void* handle, const EffectSettings& /*settings*/, const std::int16_t* in, std::int16_t* out,
             int frames) {
    aem_ProcessSurround(handle, in, out, frames);
}

EffectTiming timing(const EffectSettings& settings) {
    return surroundTiming(settings.type == kMegaBass, settings.channels);
}

int outputChannels(const EffectSettings& /*settings*/) {
    return kEars;
}

}  // namespace

constinit const EffectKind kSurroundKind = {.check = check,
                                            .create = create,
                                            .process = process,
                                            .reset = resetSurround,
                                            .release = aem_ReleaseSurround,
                                            .set_voice_level = nullptr,
                                            .timing = timing,
                                            .output_channels = outputChannels};

}  // namespace sonivex
