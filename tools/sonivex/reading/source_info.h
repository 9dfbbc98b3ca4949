#pragma once

#include <optional>
#include <string>
#include <vector>

#include "audio_spec.h"

namespace sonivex_tool {

/** Properties of an audio stream, known once its first frame is decoded. */
struct SourceInfo {
    std::string container;    // libavformat's name for the format
    std::string codec;        // libavcodec's name for the codec
    AudioSpec spec;           // of the first frame, and so of every frame that `read` returns
    int bits_per_sample = 0;  // significant bits if fewer than the format has (24 in s32), else 0
    std::optional<double> length_seconds;  // as the container states it; unreliable
    int stream_number = 0;                 // among the audio streams, from 0
    int audio_streams = 1;                 // number of audio streams in the file
    std::string language;                  // of the stream, ISO 639; empty if unknown
    double start_seconds = 0.0;            // of the first frame, after the container's start time
    bool has_samples = true;               // false: the stream is valid but empty
};

/** Tells the user which of several audio streams is read, and that a stream is empty.
 * @return no line for the only stream of a file, if it has samples */
std::vector<std::string> sentencesOn(const std::string& path, const SourceInfo& info);

}  // namespace sonivex_tool
