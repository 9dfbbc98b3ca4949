#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "audio_spec.h"
#include "codec_choice.h"
#include "output_settings.h"

namespace sonivex_tool {

/** Encoding settings of a file. */
struct EncoderPlan {
    const AVOutputFormat* muxer = nullptr;
    const AVCodec* codec = nullptr;
    AudioSpec spec;                    // of the encoder's input
    int bits_per_sample = 0;           // significant bits if fewer than the format has, else 0
    int64_t bit_rate = 0;              // bit/s of all channels; 0 for a lossless encoder
    bool has_chosen_bit_rate = false;  // the user asked for it
    bool holds_bit_rate = false;       // the encoder keeps to it where it could exceed it by choice
    std::vector<std::string> notes;    // for the user, one line each
};

/** Picks from `choices` the lowest rate that is not below `wanted`, or the highest rate if all are below it.
 * Returns `wanted` itself if there are no choices. Rates are in Hz. */
int nearestRateHz(int wanted, const std::vector<int>& choices);

/** Chooses muxer, encoder and encoder input; nothing is opened.
 *
 * docs/command-line.md describes the choice. A note tells when the rate or the layout must change.
 * @throw Failure (OutputFormat) when the settings contradict each other or suit no encoder */
EncoderPlan planEncoder(const OutputSettings& settings, const AudioFacts& audio);

}  // namespace sonivex_tool
