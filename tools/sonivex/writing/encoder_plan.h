#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "audio_spec.h"
#include "output_settings.h"

namespace sonivex_tool {

/** Encoding settings of a file. */
struct EncoderPlan {
    const AVOutputFormat* muxer = nullptr;
    const AVCodec* codec = nullptr;
    AudioSpec spec;                  // of the encoder's input
    int bits_per_sample = 0;         // significant bits if fewer than the format has, else 0
    int64_t bit_rate = 0;            // bit/s of all channels; 0 for a lossless encoder
    std::vector<std::string> notes;  // for the user, one line each
};

/** Picks from `choices` the sample format that loses the least precision of `wanted`, and of those the
 * smallest. Returns `wanted` itself if there are no choices. */
AVSampleFormat nearestSampleFormat(AVSampleFormat wanted, const std::vector<AVSampleFormat>& choices);

/** Picks from `choices` the lowest rate that is not below `wanted`, or the highest rate if all are below it.
 * Returns `wanted` itself if there are no choices. Rates are in Hz. */
int nearestRateHz(int wanted, const std::vector<int>& choices);

/** Chooses muxer, encoder and encoder input from the name of the file.
 *
 * libavformat derives the muxer from the name, and the muxer's default encoder is used. A name without an
 * extension means WAV. WAV and W64 hold PCM samples in the format of `audio`.
 * @param settings of the output; nothing is opened
 * @param audio spec of the audio to encode
 * @param bits_per_sample as in SourceInfo
 * @throw Failure (OutputFormat) */
EncoderPlan planEncoder(const OutputSettings& settings, const AudioSpec& audio, int bits_per_sample);

}  // namespace sonivex_tool
