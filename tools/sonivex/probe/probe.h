#pragma once

#include <optional>
#include <string>
#include <vector>

#include "audio_spec.h"

namespace sonivex_tool {

/** Tells what an effect does with an audio stream. */
struct EffectFit {
    /** How the effect can get the audio. */
    enum class Kind { AsItIs, Converted, Not };

    std::string effect;  // its name on the command line
    Kind kind = Kind::Not;
    std::vector<std::string> reasons;  // what is converted, or why it cannot be; one line each
};

/** One stream of a file. */
struct ProbedStream {
    int index = 0;         // in the container, from 0
    std::string kind;      // "audio", "video", "subtitle", "attachment", "cover" or "data"
    std::string codec;     // libavcodec's name
    std::string language;  // ISO 639; empty if unknown
    std::string title;
    bool is_default = false;
    std::optional<double> length_s;  // as the container states it

    // Of audio streams only.
    std::optional<int> audio_number;  // among the audio streams, from 0: the number of `render --stream`
    bool is_chosen = false;           // `render` reads this one without --stream
    AudioSpec spec;                   // of the first decoded frame
    int bits_per_sample = 0;          // significant bits if fewer than the format has, else 0
    double start_s = 0.0;             // of the first frame, after the container's start
    std::string problem;              // why nothing can be decoded; empty if it can
    std::vector<EffectFit> fits;      // one for each effect

    // Of video streams only.
    int width = 0;
    int height = 0;
};

/** Describes what is in a file. */
struct Probe {
    std::string path;
    std::string container;  // libavformat's name
    std::optional<double> length_s;
    int chapters = 0;
    std::vector<ProbedStream> streams;
};

/** Looks into a file. Each audio stream is decoded up to its first frame.
 *
 *  @param path a file that can be opened more than once
 *  @throw Failure (InputNotReadable, or the exit code of a pending signal), std::bad_alloc */
Probe probeFile(const std::string& path);

}  // namespace sonivex_tool
