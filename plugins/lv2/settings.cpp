#include "settings.h"

#include <algorithm>
#include <cmath>

#include "sonivex/effect.h"

namespace sonivex_lv2 {
namespace {

constexpr int kNeutralType = 1;
constexpr int kMegaBassType = 13;
constexpr float kBetweenTypes = 7.0F;  // lies in the middle
constexpr float kLeastVoiceLevel = 1.0F;
constexpr float kGreatestVoiceLevel = 10.0F;

// Returns the value of a control within its range.
float valueOf(const float* control, float least, float greatest, float standard) {
    if (control == nullptr || std::isnan(*control)) return standard;
    return std::clamp(*control, least, greatest);
}

int wholeValueOf(const float* control, int least, int greatest, int standard) {
    return static_cast<int>(std::lround(valueOf(control, static_cast<float>(least),
                                                static_cast<float>(greatest), static_cast<float>(standard))));
}

}  // namespace

Settings readSettings(const PluginKind& kind, const Ports& ports) {
    Settings settings;
    if (kind.effect != SONIVEX_SURROUND) return settings;
    const float type = valueOf(ports.controls[0], kNeutralType, kMegaBassType, kNeutralType);
    settings.type = type > kBetweenTypes ? kMegaBassType : kNeutralType;
    if (settings.type == kMegaBassType) settings.mode = wholeValueOf(ports.controls[1], 1, 3, 1);
    settings.limiter = wholeValueOf(ports.controls[2], 0, 1, 1);
    return settings;
}

double readVoiceLevel(const Ports& ports) {
    return valueOf(ports.controls[0], kLeastVoiceLevel, kGreatestVoiceLevel, kLeastVoiceLevel);
}

bool readBypass(const Ports& ports) {
    return ports.bypass != nullptr && *ports.bypass > 0.0F;
}

}  // namespace sonivex_lv2
