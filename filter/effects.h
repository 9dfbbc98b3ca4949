#pragma once

#include <memory>
#include <span>

#include "effect_timing.h"
#include "relaxed_atomic.h"

namespace Vorlin {

class sonivexFilter;

/** One frame's audio as an effect takes it. */
struct InputBlock {
    /** [frames][channels] interleaved signed 16-bit; owned by the frame. */
    const short* samples;
    int channels;
    int sampleRate;  // Hz
    int frames;
};

/** Describes one effect to the filter. The checks of a frame, the options that switch effects, the dispatch,
 *  the dump and the release of handles all go through this record.
 *
 *  A new effect needs a handle and a switch in class sonivexFilter, and a record with its functions in
 *  effects.cpp. Each option of its own needs a field in the class and a few lines in options.cpp. */
struct EffectRecord {
    /** Stands for the effect in the names of dump files. */
    const char* name;
    /** Stands for the effect in the names of its C functions, which the log lines about failed calls show. */
    const char* c_name;
    /** The boolean member of the option object that selects the effect or switches it off. */
    const char* option;
    /** Of several effects whose switches are on, the one with the lowest number processes the frame. No two
     *  effects have the same number. */
    int precedence;
    /** The switch of the effect in the filter. The player's thread stores it; the worker loads it. */
    Relaxed<bool> sonivexFilter::*is_on;
    /** The handle of the effect in the filter; null until a frame needs it. */
    void* sonivexFilter::*handle;
    /** Channel counts that the effect processes. A frame of any other count passes through untouched. */
    std::span<const int> channels;
    /** Sample rates that the effect processes, in Hz. */
    std::span<const int> rates_hz;
    /** @return how many channels the effect puts out when `in_channels` go in.
     *  [worker] real-time safe */
    int (*output_channels)(const sonivexFilter& filter, int in_channels);
    /** @return how late the effect is and how long it sounds on, with the current options of `filter`.
     *  [player thread] real-time safe */
    sonivex::EffectTiming (*timing)(const sonivexFilter& filter, int channels, int sample_rate_hz);
    /** Makes a handle for the channel count and the sample rate of `in`, with the current options of
     *  `filter`.
     *  @return the handle, which `release` frees, or null when it cannot be made.
     *  [worker] not real-time safe: allocates, logs */
    void* (*create)(const sonivexFilter& filter, const InputBlock& in);
    /** Processes one block.
     *  @param out [in.frames][output_channels] interleaved signed 16-bit; overwritten.
     *  @return a negative number when the block is lost.
     *  @throws std::bad_alloc
     *  [worker] not real-time safe: surround allocates for mono, the normalizer for each of its blocks */
    int (*process)(void* handle, const InputBlock& in, short* out);
    /** Frees a handle. [worker], or `flush` and the destructor while no worker runs. Not real-time safe:
     *  frees memory */
    void (*release)(void* handle);
};

/** Every effect, in the order in which options are handled and handles are released.
 *  [any, concurrent] real-time safe */
std::span<const EffectRecord> allEffects();

/** Every effect, the one with the lowest precedence number first. [any, concurrent] real-time safe */
std::span<const EffectRecord* const> effectsByPrecedence();

/** @return true if `effect` processes audio of this channel count and sample rate, in Hz.
 *  [any, concurrent] real-time safe */
bool isSupportedStream(const EffectRecord& effect, int channels, int sample_rate_hz);

/** Makes a block of silence, [frames][channels] interleaved, which the caller owns.
 *  @throws std::bad_alloc
 *  [any, concurrent] not real-time safe: allocates */
std::unique_ptr<short[]> makeBlock(int channels, int frames);

}  // namespace Vorlin
