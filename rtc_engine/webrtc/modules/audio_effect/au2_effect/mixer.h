// Mixer: sums int16 inputs with a gain each and limits every channel of the sum.
//
//   sum[i]    = sum over inputs k of input_k[i] * gain_k          in float, inputs in order
//   output[i] = truncate(peak limiter of its channel (sum[i]))
//
// Use: mixcreat, mixinit, mixproc for every block, mixfree. One mixer is used by one thread at a time.
#pragma once

#include <cstdint>

#include "mixer_limiter.h"

inline constexpr int kMaxMixerChannels = 8;

/** Version of the mixer, as mixcreat prints it. */
extern const char VerString[];

struct MixerState {
    float gainDb;                                  // current gain of the gain stage (gain_stage.h)
    std::int32_t gainInitialised;                  // 0 until the gain stage has set gainDb to its start value
    PeakLimiterState limiters[kMaxMixerChannels];  // one for each channel
    std::int32_t channelCount;  // interleaved channels that are limited separately; 0: not set up
};

/** Print the version line to standard output and allocate a mixer, zeroed.
 *  @param mixer receives the mixer, which the caller frees with mixfree, or null when memory runs out.
 *  @return 0, or -1 when memory runs out. */
int mixcreat(MixerState** mixer);

/** Set a mixer up, also anew.
 *  @param channel_count     1..8; with any other count the record is zeroed and mixproc refuses its work.
 *  @param per_sample_detect not 0: limiters with look-ahead.
 *  @param level             ceiling in units of 0.99 of full scale. */
void mixinit(MixerState* mixer, int channel_count, int per_sample_detect, float level);

/** Mix one block.
 *  @param inputs       [input_count][sample_count] interleaved.
 *  @param gains        [input_count], or null for 1.
 *  @param gains_in_db  not 0: gains are decibels, else factors.
 *  @param sample_count of all channels together; samples after the last whole frame are mixed but not
 *                     limited.
 *  @param output       [sample_count]; untouched unless the result is 0 or 1. Must not overlap an input.
 *  @return 1 if a limiter saw a level above its ceiling, 0 if none or sample_count is below 1; -1 when there
 *          is no memory for the sum, -2 when there is none for the channels or the mixer is not set up.
 *  Allocates its working blocks in every call and frees them: not strictly real-time safe. */
int mixproc(MixerState* mixer, const std::int16_t* const* inputs, const float* gains, int gains_in_db,
            int input_count, int sample_count, std::int16_t* output);

/** Free a mixer. @return 0, or -1 for null. */
int mixfree(MixerState* mixer);
