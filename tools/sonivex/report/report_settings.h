#pragma once

#include <optional>
#include <string>
#include <vector>

#include "filter_settings.h"
#include "input_settings.h"
#include "sound_plan.h"
#include "version_choice.h"

namespace sonivex_tool {

/** The command line of `report`. */
struct ReportSettings {
    InputSettings input;
    std::vector<VersionChoice> versions;  // empty: each effect that processes the input's channels
    std::string page;                     // path of the page; empty: none
    std::string picture_folder;           // receives the pictures as PNG files; empty: none
    bool replace = false;                 // existing files
    bool has_sound = true;                // false: a page without players
    WantedStretch stretch;
    std::optional<double> video_fps;  // of the video that the load guard is told of
    std::optional<double> playback_speed;
};

}  // namespace sonivex_tool
