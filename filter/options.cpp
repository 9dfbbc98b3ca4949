// The options of the filter: one JSON object for the effects, and two numbers about the video.

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "SonivexFilter.h"
#include "effects.h"
#include "vorlin/json_item.h"
#include "vorlin/log.h"

namespace Vorlin {

namespace {

constexpr int k3dSurroundType = 1;
constexpr int kMegaBassType = 13;
constexpr double kMinVoice = 1.0;

// Cuts the fraction off. A value beyond an int becomes the nearest int, NaN becomes 0.
int truncateSaturating(double value) {
    constexpr double kMin = std::numeric_limits<int>::min();
    constexpr double kMax = std::numeric_limits<int>::max();
    if (std::isnan(value)) return 0;
    return static_cast<int>(std::clamp(value, kMin, kMax));
}

// A number too large for a double becomes infinite, one too small becomes 0 or denormal.
// @throws std::invalid_argument for a text that is not a number.
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
        // Speeds are floats, so the number is rounded to float first: 1.99999999 is 2.
        mSpeed = truncateSaturating(static_cast<double>(static_cast<float>(parseNumber(value))));
        mOverFps = isOverFps();
        __log_print(LOG_DEBUG, kFilterName, "sonivex set option speed : %d, isOverFps : %d\n", mSpeed,
                    mOverFps);
    }
    return true;
}

// Applies the members in a fixed order, whatever their order in the text. If one object switches several
// effects on, the last of surround, dialogue enhancement and normalizer wins.
bool sonivexFilter::setFilterOptions(const std::string& json) {
    const VorlinJSONItem options(json);
    if (!options.isValid()) {
        __log_print(LOG_WARNING, kFilterName, "options not json item");
        return false;
    }
    if (options.hasItem("surround_effect_type")) {
        const std::string name = options.getString("surround_effect_type");
        if (name == "3DSurround" || name == "MegaBass") {
            const int type = name == "MegaBass" ? kMegaBassType : k3dSurroundType;
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

    for (const EffectRecord& effect : allEffects()) {
        if (!options.hasItem(effect.option)) continue;
        if (options.getBool(effect.option, false)) {
            selectOnly(effect);
            __log_print(LOG_DEBUG, kFilterName, "sonivex set %s: true, disabled others", effect.option);
        } else {
            this->*effect.is_on = false;
            __log_print(LOG_DEBUG, kFilterName, "sonivex set %s: false", effect.option);
        }
    }

    if (options.hasItem("enable_dump")) {
        const bool enable = options.getBool("enable_dump", false);
        mEnableDump = enable;
        __log_print(LOG_DEBUG, kFilterName, "sonivex set enable_dump: %d", enable);
    }
    return true;
}

// The new switch goes on before the others go off, so that at every moment one of them is on.
void sonivexFilter::selectOnly(const EffectRecord& effect) {
    this->*effect.is_on = true;
    for (const EffectRecord& other : allEffects()) {
        if (&other != &effect) this->*other.is_on = false;
    }
}

}  // namespace Vorlin
