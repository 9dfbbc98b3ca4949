// The options of the filter: one JSON object for the effects, and two numbers about the video.

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <new>
#include <optional>
#include <stdexcept>
#include <vector>

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

// A number too large for a double becomes infinite, one too small becomes 0 or denormal. Text after the
// number is ignored. @return nothing for a text that is not a number.
std::optional<double> parseNumber(const std::string& text) {
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    if (end == text.c_str()) return std::nullopt;
    return number;
}

// Returns only if there is no memory for the exception's message.
void throwNotANumber() try {
    throw std::invalid_argument("a frame rate or speed must be a number");
} catch (const std::bad_alloc&) {  // the caller reports it
}

}  // namespace

// The members of the options' object. An empty one leaves its option as it is.
struct FilterOptions {
    std::optional<std::string> surround_type_name;
    std::optional<int> surround_mode;
    std::optional<int> surround_limiter;
    std::optional<double> voice;
    std::vector<std::optional<bool>> is_on;  // in the order of allEffects
    std::optional<bool> is_dumped;
};

namespace {

// @throws std::bad_alloc
FilterOptions readOptions(const VorlinJSONItem& text) {
    FilterOptions options;
    const auto has = [&text](const char* name) { return text.hasItem(name); };
    if (has("surround_effect_type")) options.surround_type_name = text.getString("surround_effect_type");
    if (has("surround_mode")) options.surround_mode = text.getInt("surround_mode", 1);
    if (has("surround_limiter")) options.surround_limiter = text.getInt("surround_limiter", 1);
    if (has("dialoguenhance_voice")) {
        options.voice = std::max(kMinVoice, text.getDouble("dialoguenhance_voice", kMinVoice));
    }
    for (const EffectRecord& effect : allEffects()) {
        auto& is_on = options.is_on.emplace_back();
        if (has(effect.option)) is_on = text.getBool(effect.option, false);
    }
    if (has("enable_dump")) options.is_dumped = text.getBool("enable_dump", false);
    return options;
}

}  // namespace

bool sonivexFilter::setOption(const std::string& key, const std::string& value, const std::string&) {
    if (key == FILTER_OPTION) return setFilterOptions(value);
    if (key != VIDEO_FPS_OPTION && key != PLAYER_SPEED_OPTION) return true;
    const std::optional<double> number = parseNumber(value);
    if (!number) {
        if (isReadyToThrow()) throwNotANumber();
        __log_print(LOG_ERROR, kFilterName, "sonivex: no memory for the refusal of an option");
        return false;
    }
    if (key == VIDEO_FPS_OPTION) {
        mFps = truncateSaturating(*number);
        mOverFps = isOverFps();
        __log_print(LOG_DEBUG, kFilterName, "sonivex set option fps : %d, isOverFps : %d\n", mFps, mOverFps);
    } else {
        // Speeds are floats, so the number is rounded to float first: 1.99999999 is 2.
        mSpeed = truncateSaturating(static_cast<double>(static_cast<float>(*number)));
        mOverFps = isOverFps();
        __log_print(LOG_DEBUG, kFilterName, "sonivex set option speed : %d, isOverFps : %d\n", mSpeed,
                    mOverFps);
    }
    return true;
}

// Reads everything before anything is applied, so that options for which there is no memory change nothing.
bool sonivexFilter::setFilterOptions(const std::string& json) {
    if (isReadyToThrow()) {
        try {
            const VorlinJSONItem text(json);
            if (!text.isValid()) {
                __log_print(LOG_WARNING, kFilterName, "options not json item");
                return false;
            }
            applyOptions(readOptions(text));
            return true;
        } catch (const std::bad_alloc&) {  // is reported below
        }
    }
    __log_print(LOG_ERROR, kFilterName, "sonivex: no memory for the options");
    return false;
}

// Applies the members in a fixed order, whatever their order in the text. If one object switches several
// effects on, the last of surround, dialogue enhancement and normalizer wins.
void sonivexFilter::applyOptions(const FilterOptions& options) {
    if (options.surround_type_name) applySurroundType(*options.surround_type_name);
    if (options.surround_mode && *options.surround_mode >= 1 && *options.surround_mode <= 3) {
        mSurroundMode = *options.surround_mode;
        __log_print(LOG_DEBUG, kFilterName, "sonivex set surround_mode: %d", *options.surround_mode);
    }
    if (options.surround_limiter) {
        mSurroundLimiter = *options.surround_limiter;
        __log_print(LOG_DEBUG, kFilterName, "sonivex set surround_limiter: %d", *options.surround_limiter);
    }
    if (options.voice) {
        mVoice = *options.voice;
        __log_print(LOG_DEBUG, kFilterName, "sonivex set dialoguenhance_voice: %f", *options.voice);
    }
    for (std::size_t i = 0; i < options.is_on.size(); ++i) {
        if (options.is_on[i]) switchEffect(allEffects()[i], *options.is_on[i]);
    }
    if (options.is_dumped) {
        mEnableDump = *options.is_dumped;
        __log_print(LOG_DEBUG, kFilterName, "sonivex set enable_dump: %d", *options.is_dumped);
    }
}

void sonivexFilter::applySurroundType(const std::string& name) {
    if (name != "3DSurround" && name != "MegaBass") {
        __log_print(LOG_WARNING, kFilterName,
                    "sonivex unknown surround_effect_type: %s (supported: 3DSurround, MegaBass)",
                    name.c_str());
        return;
    }
    const int type = name == "MegaBass" ? kMegaBassType : k3dSurroundType;
    mSurroundType = type;
    __log_print(LOG_DEBUG, kFilterName, "sonivex set surround_effect_type: %s -> %d", name.c_str(), type);
}

void sonivexFilter::switchEffect(const EffectRecord& effect, bool is_on) {
    if (is_on) {
        selectOnly(effect);
        __log_print(LOG_DEBUG, kFilterName, "sonivex set %s: true, disabled others", effect.option);
    } else {
        this->*effect.is_on = false;
        __log_print(LOG_DEBUG, kFilterName, "sonivex set %s: false", effect.option);
    }
}

// The new switch goes on before the others go off, so that at every moment one of them is on.
void sonivexFilter::selectOnly(const EffectRecord& effect) {
    this->*effect.is_on = true;
    for (const EffectRecord& other : allEffects()) {
        if (&other != &effect) this->*other.is_on = false;
    }
}

}  // namespace Vorlin
