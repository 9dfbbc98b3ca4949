#pragma once

#include <optional>
#include <string>
#include <vector>

#include "effect.h"

namespace sonivex_tool {

/** Default frames per call. Every effect has a constant delay with it; the normalizer and dialogue
 *  enhancement have none from queueing. */
constexpr int kDefaultCallFrames = 1024;
/** Largest frames per call: two such calls and one block of eight channels still fit an effect's ring of
 *  81919 samples. */
constexpr int kLongestCallFrames = 4096;
/** Smallest frames per call with the filter on its own thread. That thread sleeps for 10 ms when it finds
 *  nothing to do, and only a few calls may wait for it. It therefore serves a few calls per 10 ms, however
 *  short they are. */
constexpr int kShortestThreadedCallFrames = 64;

/** How the filter is run. */
struct FilterSettings {
    std::vector<const Effect*>
        chain;              // one filter for each effect, in this order; at least one, no two alike
    FilterOptions options;  // of all effects; each takes those that it has
    std::optional<double> video_fps;
    std::optional<double> playback_speed;  // 1 is normal
    int call_frames = kDefaultCallFrames;
    std::vector<double> flush_at_s;  // positions in the input at which the filters are flushed, as by a seek
    std::string dump_folder;         // receives the PCM around the effects; empty: no dump
    bool keep_delay = false;
    bool keep_tail = false;  // let the effects' responses ring out after the input's end
    bool threaded = false;   // let each filter work on its own thread
};

}  // namespace sonivex_tool
