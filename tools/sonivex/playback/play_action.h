#pragma once

#include <optional>
#include <string>
#include <vector>

namespace sonivex_tool {

/** Everything that a key does. */
enum class PlayAction {
    ToggleEffect,
    NextEffect,
    NextType,
    NextMode,
    RaiseVoice,
    LowerVoice,
    ToggleMatching,
    Back,
    Forward,
    FarBack,
    FarForward,
    TogglePause,
    Louder,
    Quieter,
    Retry,
    Quit,
};

/** Returns what a key does; nothing for a key that does nothing. See key_reader.h for the names of keys. */
std::optional<PlayAction> actionOfKey(const std::string& key);

/** Returns every key that does something. */
std::vector<std::string> playKeys();

}  // namespace sonivex_tool
