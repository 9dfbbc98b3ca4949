#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "audio_spec.h"
#include "level_meter.h"
#include "pcm_format.h"
#include "source_report.h"

namespace sonivex_tool {

/** The files to inspect. */
struct InspectRequest {
    std::vector<std::string> files;
    /** The input and the output of an effect. Both are measured like `files` and compared with each other. */
    std::optional<std::pair<std::string, std::string>> pair;
    PcmHints hints;
};

/** A file and the levels of its audio. */
struct InspectedFile {
    std::string path;
    std::string codec;                     // libavcodec's name
    std::vector<std::string> assumptions;  // properties assumed because a bare file does not specify them
    std::vector<std::string> notes;        // problems of the file, a line each
    AudioSpec spec;
    LevelReport levels;
    DamageReport damage;  // what is lost is not measured
};

/** The latency and gain between an effect's input and its output. */
struct InspectedPair {
    std::string input;
    std::string output;
    int rate_hz = 0;
    std::optional<int64_t> delay_frames;  // missing if no part of the output clearly matches the input
    std::optional<double> gain_db;        // of the energy of all channels, aligned by the delay; missing for
                                          // silence and for samples that are not finite
};

/** The result of inspect(). */
struct InspectReport {
    std::vector<InspectedFile> files;
    std::vector<InspectedPair> pairs;
};

/** Measures every file and compares pairs: the pair of the request, and any two files whose names say that
 *  they are the input and the output of one dump session. Reads files more than once, and holds none in
 *  memory.
 *  @throw Failure if a file cannot be read or measured, or if the sample rates of a pair differ */
InspectReport inspect(const InspectRequest& request);

}  // namespace sonivex_tool
