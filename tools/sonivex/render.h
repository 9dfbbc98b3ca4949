#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "console.h"
#include "effect.h"
#include "render_report.h"
#include "vorlin/plugin.h"

namespace sonivex_tool {

/** Frames per call that `render` uses unless told otherwise: every effect has a constant delay with it, and
 * the normalizer and dialogue enhancement none beyond their own. */
constexpr int kDefaultCallFrames = 1024;
/** Eight channels of two such calls and a block still fit an effect's ring of 81919 samples. */
constexpr int kLongestCallFrames = 4096;
/** The filter's own thread takes a nap of 10 ms when it finds nothing to do, and few calls may wait for it:
 * it does a few per nap, however short they are. */
constexpr int kShortestThreadedCallFrames = 64;

struct RenderSettings {
    std::string input;
    std::string output;
    const Effect* effect = nullptr;
    FilterOptions options;
    std::optional<double> video_fps;
    std::optional<double> playback_speed;
    int stream_number = 0;
    int call_frames = kDefaultCallFrames;
    std::vector<double> flush_at_s;  // where in the input the filter is flushed, as a seek does
    std::string dump_folder;         // where the PCM around the effect is written; empty: nowhere
    bool keep_delay = false;
    bool keep_tail = false;  // let the effect's responses ring out after the input's end
    bool threaded = false;
    bool replace_output = false;
};

/** Render a file through the filter of `plugin` into another.
 *  @throw Failure, std::bad_alloc; nothing is left behind then. */
RenderReport render(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                    Console& console);

}  // namespace sonivex_tool
