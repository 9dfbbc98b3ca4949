#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "audio_spec.h"
#include "level_meter.h"
#include "pcm_format.h"

namespace sonivex_tool {

/** What to look at. */
struct InspectRequest {
    std::vector<std::string> files;
    /** What went in and what came out; compared with each other besides. */
    std::optional<std::pair<std::string, std::string>> pair;
    PcmHints hints;
};

/** A file and what is in it. */
struct InspectedFile {
    std::string path;
    std::string codec;                     // libavcodec's name
    std::vector<std::string> assumptions;  // of what a bare file does not say
    std::vector<std::string> notes;        // on what is wrong with it, a line each
    AudioSpec spec;
    LevelReport levels;
};

/** What lies between an effect's input and its output. */
struct InspectedPair {
    std::string input;
    std::string output;
    int rate_hz = 0;
    std::optional<int64_t> delay_frames;  // missing when nothing in the output clearly matches the input
    std::optional<double> gain_db;        // energy of all channels, the delay taken away; missing for silence
};

struct InspectReport {
    std::vector<InspectedFile> files;
    std::vector<InspectedPair> pairs;
};

/** Measure every file, and compare the two of the pair and any two of the files that are named as input and
 *  output of one dump session. Files are read through more than once, none is held in memory.
 *  @throw Failure when one cannot be read */
InspectReport inspect(const InspectRequest& request);

}  // namespace sonivex_tool
