#pragma once

#include "audio_spec.h"
#include "output_settings.h"
#include "sample_format.h"

namespace sonivex_tool {

/** The audio for which an encoder is chosen. */
struct AudioFacts {
    AudioSpec spec;
    int bits_per_sample = 0;   // as in SourceInfo
    bool is_lossless = false;  // the input's codec keeps every sample
};

/** Returns true if the codec keeps every sample: PCM, FLAC, DTS-HD Master Audio, …
 * @param profile as in AVCodecParameters; only DTS needs it */
bool isLossless(AVCodecID codec, int profile);

/** Returns the format of the samples that a lossless codec stores when its encoder gets `encoder_format`.
 * Several
 * encoders take samples of 32 bits although their codecs store at most 24. */
SampleFormat storedFormat(AVCodecID codec, AVSampleFormat encoder_format);

/** Returns the PCM codec that stores samples of a format in the container: little-endian unless the container
 * holds only the big-endian one. Returns AV_CODEC_ID_NONE if it holds neither. */
AVCodecID pcmCodec(const AVOutputFormat& muxer, const SampleFormat& format);

/** Chooses the encoder: the one that the settings name, or else the one that suits the container.
 *
 * The second case is described in docs/command-line.md.
 * @throw Failure (OutputFormat) if the encoder is unknown or the container cannot hold its codec */
const AVCodec* chooseEncoder(const OutputSettings& settings, const AVOutputFormat& muxer,
                             const AudioFacts& audio);

}  // namespace sonivex_tool
