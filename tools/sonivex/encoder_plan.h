#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "audio_spec.h"

namespace sonivex_tool {

/** What a file is written with. */
struct EncoderPlan {
    const AVOutputFormat* muxer = nullptr;
    const AVCodec* codec = nullptr;
    AudioSpec spec;                  // what the encoder takes
    int bits_per_sample = 0;         // that matter, when fewer than the format has; else 0
    int64_t bit_rate = 0;            // bits per second; 0 for a lossless encoder
    std::vector<std::string> notes;  // what the user should know, a line each
};

/** The sample format out of `choices` that keeps the most of `wanted`, and of those the smallest; `wanted`
 * itself when there are no choices. */
AVSampleFormat nearestSampleFormat(AVSampleFormat wanted, const std::vector<AVSampleFormat>& choices);

/** The lowest rate out of `choices` that is not below `wanted`, else the highest; `wanted` without choices.
 */
int nearestRateHz(int wanted, const std::vector<int>& choices);

/** Choose by the name of the file: WAV for none, with PCM samples like the audio's own; else what libavformat
 * makes of the name, with its default encoder.
 *  @param bits_per_sample as in SourceInfo. @throw Failure (OutputFormat) */
EncoderPlan planEncoder(const std::string& path, const AudioSpec& audio, int bits_per_sample);

}  // namespace sonivex_tool
