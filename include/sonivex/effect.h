/* One interface for all effects: create, process, reset, release, and the delay of the output.
 *
 *   SonivexEffect* effect = NULL;
 *   int status = sonivex_create_surround(&effect, 6, 48000, 1, 3, 1);
 *   if (status != SONIVEX_OK) return sonivex_status_text(status);
 *   sonivex_stream_float(effect, in, out, frames);      for every block of the host, of any length
 *   sonivex_release(effect);
 *
 * There are two ways to process, and one handle must use only one of them between two resets:
 *
 *   sonivex_stream_float       planar floats, blocks of any length; the delay is always the same
 *   sonivex_process_int16,     one call of the effect for each call; the delay depends on the length of the
 *   sonivex_process_float      calls, which should all be equal; interleaved
 *
 * The effects work on 16 bits at full scale 32768. The functions on floats round: sample * 32768 to the
 * nearest integer (half to even), limited to -32768..32767; a NaN becomes 0. Floats that come out are
 * integers / 32768, so every int16 makes the way through float and back unchanged.
 *
 * Threads: one thread at a time may use a handle; different handles are independent. */
#ifndef SONIVEX_EFFECT_H
#define SONIVEX_EFFECT_H

#include <stdint.h>

#include "sonivex/export.h"
#include "sonivex/status.h"

/** An effect with its settings and its state. */
typedef struct SonivexEffect SonivexEffect;

/** The longest call of the functions that process, in frames. */
#define SONIVEX_MAX_CALL_FRAMES 8192

/** The effects. */
enum SonivexEffectKind { SONIVEX_SURROUND = 1, SONIVEX_DIALOGUE = 2, SONIVEX_NORMALIZER = 3 };

/** Tells whether this build of the library has an effect.
 *  @param kind a SonivexEffectKind.
 *  @return 1 if it has, otherwise 0.
 *  [any, concurrent] real-time safe */
SONIVEX_API int sonivex_has_effect(int kind);

/** Creates a surround effect: headphone stereo from loudspeaker channels.
 *  @param effect         receives the handle, which the caller releases with sonivex_release; null after an
 *                        error.
 *  @param channels       of the input: 2, 6 (L R C LFE Ls Rs) or 8 (L R C LFE Lb Rb Ls Rs).
 *  @param sample_rate_hz 44100 or 48000.
 *  @param type           1 for 3DSurround, 13 for MegaBass.
 *  @param mode           the room of MegaBass: 1 small, 2 medium, 3 large. 3DSurround ignores it, but it must
 *                        be in this range.
 *  @param limiter        1 to limit peaks, 0 to clip them.
 *  @return SONIVEX_OK, SONIVEX_ERROR_ARGUMENT for a null `effect`, a mode or a limiter out of range,
 *          SONIVEX_ERROR_UNSUPPORTED, SONIVEX_ERROR_MEMORY or SONIVEX_ERROR_NOT_BUILT.
 *  Unlike aem_CreateSurround it refuses what it does not support without a leak and without a log line.
 *  [any, concurrent] not real-time safe: allocates up to 3 MiB */
SONIVEX_API int sonivex_create_surround(SonivexEffect** effect, int channels, int sample_rate_hz, int type,
                                        int mode, int limiter);

/** Creates a dialogue enhancer for stereo, with a gain floor and a gain scale of 1.
 *  @param effect         as for sonivex_create_surround.
 *  @param sample_rate_hz 8000..192000.
 *  @param voice_level    sensitivity of the presence, 0..100; usually 1, see aem_CreateDialoguEnhance.
 *  @return SONIVEX_OK, SONIVEX_ERROR_ARGUMENT, SONIVEX_ERROR_UNSUPPORTED, SONIVEX_ERROR_MEMORY or
 *          SONIVEX_ERROR_NOT_BUILT.
 *  [any, concurrent] not real-time safe: allocates 0.6 MiB (192 kHz: 1 MiB) */
SONIVEX_API int sonivex_create_dialogue(SonivexEffect** effect, int sample_rate_hz, double voice_level);

/** Creates a normalizer.
 *  @param effect         as for sonivex_create_surround.
 *  @param channels       1..8; the gain is the same in all channels.
 *  @param sample_rate_hz 8000..192000. Nothing in the effect depends on it.
 *  @return SONIVEX_OK, SONIVEX_ERROR_ARGUMENT, SONIVEX_ERROR_UNSUPPORTED, SONIVEX_ERROR_MEMORY or
 *          SONIVEX_ERROR_NOT_BUILT.
 *  Unlike aem_CreateNormalizer it prints nothing, and the normalizer allocates nothing while it works.
 *  [any, concurrent] not real-time safe: allocates up to 0.7 MiB */
SONIVEX_API int sonivex_create_normalizer(SonivexEffect** effect, int channels, int sample_rate_hz);

/** Releases an effect. Null has no effect. [any] not real-time safe: frees memory */
SONIVEX_API void sonivex_release(SonivexEffect* effect);

/** Makes an effect as it was when it was created: no sound inside, and the normalizer's gain at its start.
 *  The settings stay, among them the last sonivex_set_voice_level. Null has no effect.
 *  [any] real-time safe; clears up to 0.6 MiB */
SONIVEX_API void sonivex_reset(SonivexEffect* effect);

/** Sets the sensitivity of a dialogue enhancer from the next block on. The gains follow the presence, which
 *  is smoothed over about ten blocks, so a change does not click.
 *  @param voice_level as for sonivex_create_dialogue.
 *  @return SONIVEX_OK, or SONIVEX_ERROR_ARGUMENT, with nothing changed, for a null handle, another kind of
 *          effect or a level out of range.
 *  [any] real-time safe */
SONIVEX_API int sonivex_set_voice_level(SonivexEffect* effect, double voice_level);

/** @return channels of the input, 0 for null. [any] real-time safe */
SONIVEX_API int sonivex_input_channels(const SonivexEffect* effect);
/** @return channels of the output, 0 for null: 2 for surround, otherwise those of the input.
 *  [any] real-time safe */
SONIVEX_API int sonivex_output_channels(const SonivexEffect* effect);
/** @return frames of the effect's blocks, 0 for null: 240 for surround, 512 for the normalizer, a quarter of
 *          the transform length (512, 1024 or 2048) for dialogue enhancement.
 *  [any] real-time safe */
SONIVEX_API int sonivex_block_frames(const SonivexEffect* effect);

/** Tells how late the output of sonivex_stream_float is: one block, and for dialogue enhancement three more
 *  hops of its frames. It does not depend on the length of the host's blocks. The 25 to 40 frames (MegaBass:
 *  65 to 80) before the direct sound in surround's responses belong to the sound and do not count.
 *  @return frames, 0 for null.
 *  [any] real-time safe */
SONIVEX_API int sonivex_stream_latency_frames(const SonivexEffect* effect);

/** Tells how late the output of sonivex_process_int16 and sonivex_process_float is if all calls are equally
 *  long.
 *  @param call_frames 1..SONIVEX_MAX_CALL_FRAMES.
 *  @return frames, counted as in sonivex_stream_latency_frames. SONIVEX_ERROR_GAPS if calls of this length
 *          leave silent gaps, SONIVEX_ERROR_ARGUMENT for null or a length out of range.
 *  [any] real-time safe; takes up to a few thousand steps */
SONIVEX_API int sonivex_latency_frames(const SonivexEffect* effect, int call_frames);

/** Tells for how many frames the effect still sounds after the end of the input, beyond the latency: the
 *  length of surround's responses, 0 for the other effects. Feed as much silence to obtain the whole sound.
 *  @return frames, 0 for null.
 *  [any] real-time safe */
SONIVEX_API int sonivex_tail_frames(const SonivexEffect* effect);

/** Processes the next frames of a stream with a constant delay, sonivex_stream_latency_frames. The output
 *  does not depend on how the stream is cut into calls.
 *  @param in     [input channels][frames] planar, full scale 1; read only.
 *  @param out    [output channels][frames] planar, overwritten. A plane may be a plane of `in`, whole, in any
 *                order; otherwise planes must not overlap.
 *  @param frames 0..SONIVEX_MAX_CALL_FRAMES. At 0 nothing is accessed, and the arrays may be null.
 *  @return SONIVEX_OK, or SONIVEX_ERROR_ARGUMENT, with nothing accessed.
 *  Uses about 45 KiB of stack.
 *  [any] real-time safe */
SONIVEX_API int sonivex_stream_float(SonivexEffect* effect, const float* const* in, float* const* out,
                                     int frames);

/** Processes one call with the delay sonivex_latency_frames. The output has the same bytes as that of the
 *  aem_ function of the effect.
 *  @param in     [frames][input channels] interleaved; read only.
 *  @param out    [frames][output channels] interleaved, overwritten. Must not overlap `in`.
 *  @param frames 0..SONIVEX_MAX_CALL_FRAMES. At 0 nothing is accessed, and the arrays may be null.
 *  @return SONIVEX_OK, or SONIVEX_ERROR_ARGUMENT, with nothing accessed.
 *  [any] real-time safe */
SONIVEX_API int sonivex_process_int16(SonivexEffect* effect, const int16_t* in, int16_t* out, int frames);

/** Processes one call as sonivex_process_int16 does, from and to floats of full scale 1. `out` may be `in`.
 *  [any] real-time safe */
SONIVEX_API int sonivex_process_float(SonivexEffect* effect, const float* in, float* out, int frames);

#endif /* SONIVEX_EFFECT_H */
