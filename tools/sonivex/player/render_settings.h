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

/** The command line of `render`. */
struct RenderSettings {
    std::string input;
    std::string output;
    const Effect* effect = nullptr;
    FilterOptions options;
    std::optional<double> video_fps;
    std::optional<double> playback_speed;  // 1 is normal
    int stream_number = 0;                 // among the audio streams of the input, from 0
    int call_frames = kDefaultCallFrames;
    std::vector<double> flush_at_s;  // positions in the input at which the filter is flushed, as by a seek
    std::string dump_folder;         // receives the PCM around the effect; empty: no dump
    bool keep_delay = false;
    bool keep_tail = false;  // let the effect's responses ring out after the input's end
    bool threaded = false;   // let the filter work on its own thread
    bool replace_output = false;
};

}  // namespace sonivex_tool
