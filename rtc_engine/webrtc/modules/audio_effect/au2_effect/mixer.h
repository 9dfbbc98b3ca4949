// Mixer: sums int16 inputs, each with its own gain, and limits every channel of the sum.
//
//   sum[i]    = sum over inputs k of input_k[i] * gain_k          in float, inputs in order
//   output[i] = truncate(peak limiter of its channel (sum[i]))
//
// Use: call mixcreat, mixinit, mixproc for every block, then mixfree. One thread at a time may use a mixer.
#pragma once

#include <cstdint>

#include "mixer_limiter.h"

inline constexpr int kMaxMixerChannels = 8;

/** The version that mixcreat prints. */
extern const char VerString[];

/** The state of a mixer and of the gain stage that uses it. */
struct MixerState {
    float gainDb;                                  // current gain of the gain stage (gain_stage.h)
    std::int32_t gainInitialised;                  // 0 until the gain stage has set gainDb to its start value
    PeakLimiterState limiters[kMaxMixerChannels];  // one per channel
    std::int32_t channelCount;  // interleaved channels that are limited separately; 0: not set up
};

/** Prints the version line to standard output and allocates a zeroed mixer.
 *  @param mixer receives the mixer, which the caller frees with mixfree, or null when memory runs out.
 *  @return 0, or -1 when memory runs out.
 *  [any] not real-time safe (allocates, prints) */
int mixcreat(MixerState** mixer);

/** Allocates a zeroed mixer as mixcreat does, but prints nothing.
 *  @return the mixer, which the caller frees with mixfree, or null when memory runs out.
 *  [any, concurrent] not real-time safe: allocates */
MixerState* makeMixer();

/** Initialises or re-initialises a mixer.
 *  @param channel_count     1..8. Any other count zeroes the record, and mixproc then fails.
 *  @param per_sample_detect if it is not 0, the limiters use look-ahead.
 *  @param level             ceiling in units of 0.99 of full scale.
 *  [any] real-time safe */
void mixinit(MixerState* mixer, int channel_count, int per_sample_detect, float level);

/** Mixes one block.
 *  @param inputs       [input_count][sample_count] interleaved.
 *  @param gains        [input_count], or null for gains of 1.
 *  @param gains_in_db  not 0: the gains are decibels; 0: they are factors.
 *  @param sample_count samples of all channels together. Samples after the last whole frame are mixed but not
 *                      limited.
 *  @param output       [sample_count] interleaved; written only if the result is 0 or 1. Must not overlap an
 *                      input.
 *  @return 1 if a limiter saw a level above its ceiling, 0 if none did or sample_count is below 1. -1 if the
 *          sum cannot be allocated; -2 if the channels cannot be allocated or the mixer is not set up.
 *  [any] not real-time safe (allocates and frees its working blocks in every call) */
int mixproc(MixerState* mixer, const std::int16_t* const* inputs, const float* gains, int gains_in_db,
            int input_count, int sample_count, std::int16_t* output);

/** Memory for mixWith: one array for the sum and one for each channel, not overlapping. */
struct MixerBuffers {
    float* sum;              // [sample_count]
    float* const* channels;  // [channel_count][sample_count / channel_count]
};

/** Mixes one block as mixproc does, in memory of the caller.
 *  @param mixer   set up by mixinit.
 *  @param buffers overwritten.
 *  @return as mixproc, without the failures.
 *  [any] real-time safe */
int mixWith(MixerState* mixer, const std::int16_t* const* inputs, const float* gains, int gains_in_db,
            int input_count, int sample_count, const MixerBuffers& buffers, std::int16_t* output);

/** Frees a mixer.
 *  @return 0, or -1 for null.
 *  [any] not real-time safe (frees memory) */
int mixfree(MixerState* mixer);
