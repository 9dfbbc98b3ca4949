// How the player configures the filter: one JSON object for the effects, and two numbers about the video.

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "SonivexFilter.h"
#include "vorlin/json_item.h"
#include "vorlin/log.h"

namespace Vorlin {

namespace {

constexpr int kType3dSurround = 1;
constexpr int kTypeMegaBass = 13;
constexpr double kMinVoice = 1.0;

int truncateSaturating(double value) {
    constexpr double kMin = std::numeric_limits<int>::min();
    constexpr double kMax = std::numeric_limits<int>::max();
    if (std::isnan(value)) return 0;
    return static_cast<int>(std::clamp(value, kMin, kMax));
}

// @throws std::invalid_argument for a text that is no number; a number beyond double is infinite or 0.
double parseNumber(const std::string& text) {
    try {
        return std::stod(text);
    } catch (const std::out_of_range&) {
        return std::strtod(text.c_str(), nullptr);
    }
}

}  // namespace

bool sonivexFilter::setOption(const std::string& key, const std::string& value, const std::string&) {
    if (key == FILTER_OPTION && !setFilterOptions(value)) return false;
    if (key == VIDEO_FPS_OPTION) {
        mFps = truncateSaturating(parseNumber(value));
        mOverFps = isOverFps();
        __log_print(LOG_DEBUG, kFilterName, "sonivex set option fps : %d, isOverFps : %d\n", mFps, mOverFps);
    }
    if (key == PLAYER_SPEED_OPTION) {
        // Rounded to float first, as speeds are: 1.99999999 is 2.
        mSpeed = truncateSaturating(static_cast<double>(static_cast<float>(parseNumber(value))));
        mOverFps = isOverFps();
        __log_print(LOG_DEBUG, kFilterName, "sonivex set option speed : %d, isOverFps : %d\n", mSpeed,
                    mOverFps);
    }
    return true;
}

// Members are applied in this order whatever their order in the text, so of several effects that one object
// switches on the last of surround, dialogue and normalizer wins.
bool sonivexFilter::setFilterOptions(const std::string& json) {
    const VorlinJSONItem options(json);
    if (!options.isValid()) {
        __log_print(LOG_WARNING, kFilterName, "options not json item");
        return false;
    }
    if (options.hasItem("surround_effect_type")) {
        const std::string name = options.getString("surround_effect_type");
        if (name == "3DSurround" || name == "MegaBass") {
            const int type = name == "MegaBass" ? kTypeMegaBass : kType3dSurround;
            mSurroundType = type;
            __log_print(LOG_DEBUG, kFilterName, "sonivex set surround_effect_type: %s -> %d", name.c_str(),
                        type);
        } else {
            __log_print(LOG_WARNING, kFilterName,
                        "sonivex unknown surround_effect_type: %s (supported: 3DSurround, MegaBass)",
                        name.c_str());
        }
    }
    if (options.hasItem("surround_mode")) {
        const int mode = options.getInt("surround_mode", 1);
        if (mode >= 1 && mode <= 3) {
            mSurroundMode = mode;
            __log_print(LOG_DEBUG, kFilterName, "sonivex set surround_mode: %d", mode);
        }
    }
    if (options.hasItem("surround_limiter")) {
        const int limiter = options.getInt("surround_limiter", 1);
        mSurroundLimiter = limiter;
        __log_print(LOG_DEBUG, kFilterName, "sonivex set surround_limiter: %d", limiter);
    }
    if (options.hasItem("dialoguenhance_voice")) {
        const double voice = std::max(kMinVoice, options.getDouble("dialoguenhance_voice", kMinVoice));
        mVoice = voice;
        __log_print(LOG_DEBUG, kFilterName, "sonivex set dialoguenhance_voice: %f", voice);
    }

    const struct {
        const char* member;
        Effect effect;
        Relaxed<bool>& is_on;
    } switches[] = {
        {"enable_surround", Effect::Surround, mEnableSurround},
        {"enable_dialoguenhance", Effect::Dialogue, mEnableDialogue},
        {"enable_normalizer", Effect::Normalizer, mEnableNormalizer},
    };
    for (const auto& effect_switch : switches) {
        if (!options.hasItem(effect_switch.member)) continue;
        if (options.getBool(effect_switch.member, false)) {
            selectOnly(effect_switch.effect);
            __log_print(LOG_DEBUG, kFilterName, "sonivex set %s: true, disabled others",
                        effect_switch.member);
        } else {
            effect_switch.is_on = false;
            __log_print(LOG_DEBUG, kFilterName, "sonivex set %s: false", effect_switch.member);
        }
    }

    if (options.hasItem("enable_dump")) {
        const bool enable = options.getBool("enable_dump", false);
        mEnableDump = enable;
        __log_print(LOG_DEBUG, kFilterName, "sonivex set enable_dump: %d", enable);
    }
    return true;
}

// The new one on before the others go off: a worker that looks in between finds an effect, not none.
void sonivexFilter::selectOnly(Effect effect) {
    if (effect == Effect::Surround) mEnableSurround = true;
    if (effect == Effect::Dialogue) mEnableDialogue = true;
    if (effect == Effect::Normalizer) mEnableNormalizer = true;
    if (effect != Effect::Surround) mEnableSurround = false;
    if (effect != Effect::Dialogue) mEnableDialogue = false;
    if (effect != Effect::Normalizer) mEnableNormalizer = false;
}

}  // namespace Vorlin
