// The delay and the tail of each effect, in frames, as its settings and its sample rate decide them.
//
//   delay = that of the block queue, delayOfCalls_frames(), + own_delay_frames
//   tail  = tail_frames after the end of the input, beyond the delay
//
// The few frames before the direct sound in surround's responses belong to the sound and do not count as
// delay.
#pragma once

#include <cstdint>
#include <optional>

namespace sonivex {

/** The lengths that decide when an effect's output comes and when it ends. */
struct EffectTiming {
    int block_frames = 0;      // of the blocks in which the effect works; 0: it passes everything on at once
    int own_delay_frames = 0;  // beyond the queueing of blocks
    int tail_frames = 0;       // for which the effect sounds on
};

/** Blocks of surround. */
inline constexpr int kSurroundTimingBlock_frames = 240;
/** Blocks of the normalizer. */
inline constexpr int kNormalizerTimingBlock_frames = 512;
/** Longest blocks of dialogue enhancement: those of the highest rates. */
inline constexpr int kDialogueLongestHop_frames = 2048;

/** @param is_megabass false for 3DSurround.
 *  @param channels    of the input: 1, 2, 6 or 8.
 *  [any, concurrent] real-time safe */
EffectTiming surroundTiming(bool is_megabass, int channels);

/** @param sample_rate_hz decides the length of the transform.
 *  [any, concurrent] real-time safe */
EffectTiming dialogueTiming(int sample_rate_hz);

/** [any, concurrent] real-time safe */
EffectTiming normalizerTiming();

/** Returns the delay in frames that the block queue of an effect causes.
 *
 *  An effect queues the samples of a call and processes them in whole blocks. It answers a call with silence
 *  unless it has enough processed samples for the whole call:
 *
 *    queued += call;  while (queued >= block) { queued -= block; ready += block; }
 *    if (ready >= call) ready -= call; else the call's answer is silence
 *
 *  Each silent answer adds one call to the delay. For some call sizes (300 frames in blocks of 512) another
 *  silent answer follows in the middle of the sound, because the first ones did not build up enough of a
 *  lead. Such a size leaves gaps in the output and has no constant delay that a player could compensate.
 *
 *  @param call_frames length of every call, at least 1.
 *  @return nothing if a silent answer follows one that is not silent.
 *  [any, concurrent] real-time safe; takes 2 * block / gcd(block, call) steps */
std::optional<int64_t> delayOfCalls_frames(int block_frames, int call_frames);

/** Returns the whole delay of an effect's output in calls of one length, as delayOfCalls_frames does; 0 for
 *  an effect without blocks.
 *  [any, concurrent] real-time safe */
std::optional<int64_t> delayInCalls_frames(const EffectTiming& timing, int call_frames);

}  // namespace sonivex
