// Applies a gain in decibels that only ever steps down, followed by the mixer and its limiter.
//
//   level_db = 20 log10(peak of the block / 32768)              silence: minus infinity
//   gain_db  = start gain before the first block
//   over     = level_db + gain_db; if over > 0: gain_db = max(0, gain_db - max(3, over))
//   output   = mixer(block, gain_db)
//
// The gain is the mixer's gainDb: it lives as long as the mixer and never rises.
//
// Use: create and set up a mixer (mixer.h), then call ddagcproc_dB for every block.
#pragma once

#include <cstdint>

#include "mixer.h"

/** Process one block.
 *  @param mixer         set up by mixinit; its gainDb and limiters carry over from block to block.
 *  @param input         [sample_count] interleaved; the peak is taken over all channels.
 *  @param sample_count  if it is below 1, the block counts as silence and nothing is written.
 *  @param output        [sample_count] interleaved; unchanged if the mixer gets no memory. Must not overlap
 *                       `input`.
 *  @param start_gain_db the gain before the first block; ignored after that.
 *  @return the gain in dB after this block, 0..start_gain_db.
 *  [any] not real-time safe (the mixer allocates) */
float ddagcproc_dB(MixerState* mixer, const std::int16_t* input, int sample_count, std::int16_t* output,
                   float start_gain_db);

/** Process one block as ddagcproc_dB does, in memory of the caller.
 *  @param buffers as for mixWith (mixer.h).
 *  [any] real-time safe */
float applyGainStage(MixerState* mixer, const std::int16_t* input, int sample_count,
                     const MixerBuffers& buffers, std::int16_t* output, float start_gain_db);
