/* Surround for headphones: renders stereo, 5.1 or 7.1 as loudspeakers in a room.
 *
 *   ear   = sum over the input channels of (channel convolved with its loudspeaker's response at that ear)
 *   type  1: neutral ("3DSurround").  13: boosted bass and a choice of rooms ("MegaBass"); it drops the
 *         low-frequency channel, and in stereo each channel reaches only the ear on its own side.
 *   out   = peak limiter at 0.99 of full scale, or hard clip
 *
 * Use: call aem_CreateSurround, aem_ProcessSurround for every block of PCM, then aem_ReleaseSurround.
 * Threads: one thread at a time may use a handle; different handles are independent. */
#ifndef SONIVEX_SURROUND_H
#define SONIVEX_SURROUND_H

#include "sonivex/export.h"

/** Creates a surround effect.
 *  @param channels   1 or 2, 6 (L R C LFE Ls Rs) or 8 (L R C LFE Lb Rb Ls Rs).
 *  @param sampleRate in Hz; stored but not used. The responses are made for 48000 Hz and are not resampled:
 *                    at 44100 Hz the room and the head are 9 % larger.
 *  @param type       1 or 13.
 *  @param mode       room of type 13: 1 small, 2 medium, any other value large. Type 1 ignores it.
 *  @param limiter    1: limit peaks; any other value: clip them.
 *  @return a handle, which the caller releases with aem_ReleaseSurround, or null. Null if memory runs out
 *          (logged; everything is freed), or if type or channels is not supported (logged; each such call
 *          leaks some 20 KiB, so do not probe with it).
 *  Allocates up to 2.7 MiB.
 *  [any] not real-time safe (allocates) */
SONIVEX_API void* aem_CreateSurround(int channels, int sampleRate, int type, int mode, int limiter);

/** Renders one call's worth of PCM.
 *  @param handle from aem_CreateSurround.
 *  @param in     [frames][channels] interleaved signed 16-bit; read only. A handle created for 1 channel also
 *                reads two samples per frame, left and right. Must not overlap `out`.
 *  @param out    [frames][2] interleaved signed 16-bit; the caller's memory, overwritten.
 *  @param frames samples per channel. If it is 0 or negative, neither buffer is accessed, and both may be
 *                null.
 *  @return 2 * frames, even when the output is silence; 0, with nothing accessed, for a null handle or buffer
 *          and for a sample count that does not fit an int. If frames is below 1, the result is always
 *          2 * frames, or 0 where that does not fit an int.
 *
 *  Latency: the effect renders blocks of 240 frames, and it serves a call only when the whole output of the
 *  call is ready; until then the call returns silence. Calls of a multiple of 240 frames have no delay, other
 *  calls of more than 240 frames are late by one call, and calls of a divisor of 240 by 240 - frames. With
 *  any other size below 240, a call in mid-stream may find too little output queued and return silence as
 *  well. The direct sound starts 25 to 40 frames into the responses (type 13: 65 to 80). The responses ring
 *  for up to 12999 frames after the end of the input; feed zeros to obtain this tail.
 *
 *  At most 81919 samples wait on the input side and on the output side. Samples beyond that are dropped one
 *  by one, so a frame can be split. A call of more than 40959 frames always returns silence.
 *
 *  Uses about 10 KiB of stack. Calls of 480 frames or more cost less per frame, because waiting blocks are
 *  rendered two at a time.
 *  [any] real-time safe */
SONIVEX_API int aem_ProcessSurround(void* handle, const short* in, short* out, int frames);

/** Releases a surround effect. A null handle is logged and has no other effect.
 *  [any] not real-time safe (frees memory) */
SONIVEX_API void aem_ReleaseSurround(void* handle);

#endif /* SONIVEX_SURROUND_H */
