#include "kind_records.h"
#include "normalizer_control.h"
#include "sonivex/normalizer.h"
#include "sonivex/status.h"

namespace sonivex {
namespace {

int check(const EffectSettings& settings) {
    const bool is_supported = settings.channels >= 1 && settings.channels <= kEffectMaxChannels &&
                              isUsualRate(settings.sample_rate_hz);
    return is_supported ? SONIVEX_OK : SONIVEX_ERROR_UNSUPPORTED;
}

void* create(const EffectSettings& settings) {
    return createNormalizer(settings.channels, settings.sample_rate_hz);
}

void process(void* handle, const EffectSettings& settings, const std::int16_t* in, std::int16_t* out,
             int frames) {
    aem_ProcessNormalizer(handle, in, out, frames, settings.channels);
}

EffectTiming timing(const EffectSettings& /*settings*/) {
    return normalizerTiming();
}

int outputChannels(const EffectSettings& settings) {
    return settings.channels;
}

}  // namespace

constinit const EffectKind kNormalizerKind = {.check = check,
                                              .create = create,
                                              .process = process,
                                              .reset = resetNormalizer,
                                              .release = aem_ReleaseNormalizer,
                                              .set_voice_level = nullptr,
                                              .timing = timing,
                                              .output_channels = outputChannels};

}  // namespace sonivex
