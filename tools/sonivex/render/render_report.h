#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "audio_spec.h"
#include "conditioner.h"
#include "loudness.h"
#include "source_info.h"
#include "source_report.h"

namespace sonivex_tool {

/** The input or the output file of a render. */
struct FileReport {
    std::string path;
    std::string format;  // libavformat's name
    std::string codec;   // libavcodec's name
    AudioSpec spec;
    int64_t frames = 0;  // samples per channel, as decoded or as handed to the encoder
    Loudness loudness;
};

/** The result of a render. */
struct RenderReport {
    FileReport input;
    FileReport output;
    std::string effect;
    bool is_measured = true;  // false: loudness and peaks are unknown
    double elapsed_seconds = 0.0;
    int64_t delay_frames = 0;  // of the filter, in frames of the input's rate
    bool delay_is_removed = true;
    SourceInfo source;                     // which stream of the input was read
    TimelineReport timeline;               // how reading followed the timestamps
    DamageReport damage;                   // what of the input is lost
    std::vector<std::string> conversions;  // what was converted for the effects, one sentence each
    ConditionerCounts samples;             // odd samples of the input
    uint64_t pushed = 0;                   // calls of the filter, each with a block of frames
    uint64_t dropped = 0;             // the calls among them that the filter dropped, replaced by silence
    uint64_t bypassed = 0;            // the calls among them that passed through untouched
    int64_t silent_fill_frames = 0;   // silence in OUT for dropped calls, in frames of the input's rate
    uint64_t flushes = 0;             // flushes of the filter that the settings asked for
    std::string dump_folder;          // empty: no dump was asked for
    std::vector<std::string> dumps;   // names of the files written there
    uint64_t dump_bytes_missing = 0;  // bytes that the filter failed to write to them
    std::vector<std::string> notes;   // lines that the user should see

    /** Returns the length of the output in seconds. */
    double lengthSeconds() const;
    /** Returns the seconds of output rendered per second of work; 0 if no time was measured. */
    double timesRealTime() const;
};

/** Lists, for the user, what went wrong without failing the render; one line each. */
std::vector<std::string> remarks(const RenderReport& report);

/** Formats the report for people: several lines, the last one terminated. */
std::string asText(const RenderReport& report);

/** Formats the report for programs: one JSON object on one terminated line. Bytes of file names that are not
 *  UTF-8 are replaced. */
std::string asJson(const RenderReport& report);

}  // namespace sonivex_tool
