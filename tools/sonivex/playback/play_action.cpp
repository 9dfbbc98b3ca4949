#include "play_action.h"

#include <array>
#include <utility>

namespace sonivex_tool {
namespace {

constexpr std::array<std::pair<const char*, PlayAction>, 18> kKeys = {{
    {"e", PlayAction::ToggleEffect},
    {"n", PlayAction::NextEffect},
    {"t", PlayAction::NextType},
    {"m", PlayAction::NextMode},
    {"v", PlayAction::RaiseVoice},
    {"V", PlayAction::LowerVoice},
    {"l", PlayAction::ToggleMatching},
    {"left", PlayAction::Back},
    {"right", PlayAction::Forward},
    {"pageup", PlayAction::FarBack},
    {"pagedown", PlayAction::FarForward},
    {"space", PlayAction::TogglePause},
    {"+", PlayAction::Louder},
    {"up", PlayAction::Louder},
    {"-", PlayAction::Quieter},
    {"down", PlayAction::Quieter},
    {"r", PlayAction::Retry},
    {"q", PlayAction::Quit},
}};

}  // namespace

std::optional<PlayAction> actionOfKey(const std::string& key) {
    for (const auto& [name, action] : kKeys) {
        if (key == name) return action;
    }
    return std::nullopt;
}

std::vector<std::string> playKeys() {
    std::vector<std::string> names;
    names.reserve(kKeys.size());
    for (const auto& [name, action] : kKeys) names.emplace_back(name);
    return names;
}

}  // namespace sonivex_tool
