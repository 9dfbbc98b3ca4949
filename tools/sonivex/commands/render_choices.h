// The options of `render`: one function for each concern adds its options to the parser, and checkChoices
// checks them against each other once the command line and the preset are read.
#pragma once

#include <CLI/CLI.hpp>
#include <string>

#include "batch_options.h"
#include "render_settings.h"

namespace sonivex_tool {

/** The command line of `render` as typed. */
struct RenderChoices {
    RenderSettings settings;
    std::string effects = allEffects().front().name;  // names separated by commas
    std::optional<double> true_peak_dbtp;
    bool no_dither = false;
    bool ignore_timeline = false;
    bool no_measure = false;
    std::string plugin;
    std::string preset;       // a name, or a path with a slash; empty: none
    std::string save_preset;  // likewise
    bool list_presets = false;
    bool quiet = false;
    bool json = false;
    bool verbose = false;
    BatchOptions batch;
};

/** Adds IN and the options about reading it. CLI11 takes IN as optional. */
void addInputOptions(CLI::App& command, RenderChoices& choices);
/** Adds `--effect`, the options of the effects and those about the accompanying video. */
void addEffectOptions(CLI::App& command, RenderChoices& choices);
/** Adds the options about sample rate, layout, dither and level. */
void addSoundOptions(CLI::App& command, RenderChoices& choices);
/** Adds the options about how the filter is loaded and called. */
void addFilterOptions(CLI::App& command, RenderChoices& choices);
/** Adds OUT and the options about its contents. CLI11 takes OUT as optional. */
void addOutputOptions(CLI::App& command, RenderChoices& choices);
/** Adds `--preset`, `--save-preset` and `--list-presets`. */
void addPresetOptions(CLI::App& command, RenderChoices& choices);
/** Adds the options about messages. */
void addMessageOptions(CLI::App& command, RenderChoices& choices);

/** Adds all of them. */
void addRenderOptions(CLI::App& command, RenderChoices& choices);

/** Fills in the settings that several options or a list of names decide, and checks the options against each
 *  other.
 *
 *  @throw Failure (Usage) that names an option which nothing in the chain of effects has */
void checkChoices(RenderChoices& choices);

/** Checks IN and OUT of one file.
 *
 *  @throw Failure (Usage) if one of them is missing or names a descriptor other than the standard ones */
void checkPaths(const RenderChoices& choices);

}  // namespace sonivex_tool
