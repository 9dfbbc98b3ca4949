#include "dialogue_control.h"
#include "kind_records.h"
#include "sonivex/dialoguenhance.h"
#include "sonivex/status.h"

namespace sonivex {
namespace {

int check(const EffectSettings& settings) {
    return isUsualRate(settings.sample_rate_hz) ? SONIVEX_OK : SONIVEX_ERROR_UNSUPPORTED;
}

void* create(const EffectSettings& settings) {
    return createDialogue(settings.sample_rate_hz, settings.voice_level);
}

void process(void* handle, const EffectSettings& settings, const std::int16_t* in, std::int16_t* out,
             int frames) {
    aem_ProcessDialoguEnhance(handle, in, out, frames, settings.sample_rate_hz);
}

EffectTiming timing(const EffectSettings& settings) {
    return dialogueTiming(settings.sample_rate_hz);
}

int outputChannels(const EffectSettings& settings) {
    return settings.channels;
}

}  // namespace

constinit const EffectKind kDialogueKind = {.check = check,
                                            .create = create,
                                            .process = process,
                                            .reset = resetDialogue,
                                            .release = aem_ReleaseDialoguEnhance,
                                            .set_voice_level = setDialogueVoiceLevel,
                                            .timing = timing,
                                            .output_channels = outputChannels};

}  // namespace sonivex
