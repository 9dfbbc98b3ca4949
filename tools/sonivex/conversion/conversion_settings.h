#pragma once

#include <optional>
#include <string>

namespace sonivex_tool {

/** How audio is prepared for the effects. */
struct ConversionSettings {
    std::optional<int> rate_hz = {};  // of the effects; else the nearest that all of them support
    std::optional<std::string> layout =
        {};               // of the effects' input, as FFmpeg names it; else chosen likewise
    bool strict = false;  // refuse audio that would need another rate or layout
    bool dither = true;   // when the audio has more than 16 bits
};

}  // namespace sonivex_tool
