#include "engine.h"

namespace sonivex_lv2 {

int makeEngine(const PluginKind& kind, int sample_rate_hz, const Settings& settings, Engine& engine) {
    constexpr double kFirstVoiceLevel = 1.0;
    SonivexEffect* made = nullptr;
    int status = SONIVEX_ERROR_NOT_BUILT;
    if (kind.effect == SONIVEX_SURROUND) {
        status = sonivex_create_surround(&made, kind.channels_in, sample_rate_hz, settings.type,
                                         settings.mode, settings.limiter);
    } else if (kind.effect == SONIVEX_DIALOGUE) {
        status = sonivex_create_dialogue(&made, sample_rate_hz, kFirstVoiceLevel);
    } else if (kind.effect == SONIVEX_NORMALIZER) {
        status = sonivex_create_normalizer(&made, kind.channels_in, sample_rate_hz);
    }
    engine.reset(made);
    return status;
}

}  // namespace sonivex_lv2
