#pragma once

#include "conversion_settings.h"
#include "filter_settings.h"
#include "input_settings.h"
#include "level_settings.h"
#include "output_settings.h"

namespace sonivex_tool {

/** The command line of `render`. */
struct RenderSettings {
    InputSettings input;
    ConversionSettings conversion;
    FilterSettings filter;
    LevelSettings level;
    OutputSettings output;
    bool trim_start = false;     // begin an audio file with the first sample, even if it starts late
    bool ignore_damage = false;  // exit with 0 even if a part of the input was lost
    bool dry_run = false;        // tell what would be done, and write nothing
};

}  // namespace sonivex_tool
