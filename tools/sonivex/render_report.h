#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "audio_spec.h"
#include "loudness.h"

namespace sonivex_tool {

/** One side of a render. */
struct FileReport {
    std::string path;
    std::string format;  // libavformat's name
    std::string codec;   // libavcodec's name
    AudioSpec spec;
    int64_t frames = 0;  // samples per channel, as decoded or as handed to the encoder
    Loudness loudness;
};

/** What a render did. */
struct RenderReport {
    FileReport input;
    FileReport output;
    std::string effect;
    double elapsed_seconds = 0.0;
    int64_t delay_frames = 0;  // of the filter, in frames of the input's rate
    bool delay_is_removed = true;
    uint64_t decode_errors = 0;
    uint64_t pushed = 0;              // calls of the filter, each with a block of frames
    uint64_t dropped = 0;             // of these, given up by it and replaced by silence
    uint64_t bypassed = 0;            // of these, passed through untouched
    int64_t silent_fill_frames = 0;   // silence in OUT for what was given up, in frames of the input's rate
    uint64_t flushes = 0;             // of the filter, as asked for
    std::string dump_folder;          // empty: no dump was asked for
    std::vector<std::string> dumps;   // names of the files written there
    uint64_t dump_bytes_missing = 0;  // what the filter did not manage to write to them
    std::vector<std::string> notes;

    double lengthSeconds() const;
    /** Seconds of audio for each second of work. */
    double timesRealTime() const;
};

/** What went less well than it could, for the user, a line each. */
std::vector<std::string> remarks(const RenderReport& report);

/** For people: several lines, with the last newline. */
std::string asText(const RenderReport& report);

/** For programs: one JSON object on one line, with the newline. */
std::string asJson(const RenderReport& report);

}  // namespace sonivex_tool
