/* Surround for headphones: stereo, 5.1 or 7.1 heard as loudspeakers in a room.
 *
 *   ear   = sum over the input channels of (channel * response of its loudspeaker at that ear)
 *   type  1: neutral ("3DSurround").  13: with lifted bass and a choice of rooms ("MegaBass"); drops the
 *         low-frequency channel, and each side of two channels stays at its own ear.
 *   out   = peak limiter at 0.99 of full scale, or a hard clip
 *
 * Use: aem_CreateSurround, aem_ProcessSurround for every block, aem_ReleaseSurround.
 * Threads: a handle is used by one thread at a time; different handles are independent. */
#ifndef SONIVEX_SURROUND_H
#define SONIVEX_SURROUND_H

#include "sonivex/export.h"

/** Make a surround effect.
 *  @param channels   1 or 2, 6 (L R C LFE Ls Rs) or 8 (L R C LFE Lb Rb Ls Rs).
 *  @param sampleRate in Hz; stored only. The responses are made for 48000 and used as they are: at 44100 the
 *                    room and the head are 9 % larger.
 *  @param type       1 or 13.
 *  @param mode       room of type 13: 1 small, 2 middle, every other value large. Type 1 ignores it.
 *  @param limiter    1: limit peaks; every other value: clip them.
 *  @return a handle that the caller releases with aem_ReleaseSurround, or null: memory has run out (logged;
 *          everything is freed), or type or channels are not supported (logged; some 20 KiB stay allocated
 *          for ever, so do not try).
 *  Allocates up to 2.7 MiB; not real-time safe. */
SONIVEX_API void* aem_CreateSurround(int channels, int sampleRate, int type, int mode, int limiter);

/** Render one call's worth of PCM.
 *  @param handle from aem_CreateSurround.
 *  @param in     [frames][channels] interleaved signed 16-bit; only read. A handle made for 1 channel reads
 *                two samples a frame as well, left and right. Must not overlap `out`.
 *  @param out    [frames][2] interleaved signed 16-bit; the caller's memory, overwritten.
 *  @param frames samples per channel. At 0 and below neither buffer is looked at, and both may be null.
 *  @return 2 * frames, also when the output is silence; 0, with nothing touched, for a null handle or buffer
 *          and for sample counts beyond an int. Of frames below 1 always twice as many, or 0 where that is no
 *          int.
 *
 *  Latency: input is rendered in blocks of 240 frames, and a call is served only when the whole of it can
 *  be; until then it gets silence. Calls of a multiple of 240 frames have no delay, other calls of more than
 *  240 frames are late by one call, and calls of a divisor of 240 by 240 - frames. With any other size below
 *  240 a call within the stream may find too little queued and be silent as well. The direct sound of the
 *  responses begins 25 to 40 frames into them (type 13: 65 to 80), and they sound on for up to 12999 frames
 *  after the input; send zeros to hear them.
 *
 *  At most 81919 samples wait on either side. What a call brings beyond that is dropped, sample by sample, so
 *  that a frame can be split; a call of more frames than 40959 is never served.
 *
 *  Real-time safe: no lock, no allocation, no system call. Needs about 10 KiB of stack. Calls of 480 frames
 *  and more are cheaper by the frame: blocks that wait are rendered two at a time. */
SONIVEX_API int aem_ProcessSurround(void* handle, const short* in, short* out, int frames);

/** Free a surround effect. A null handle is logged and otherwise harmless. */
SONIVEX_API void aem_ReleaseSurround(void* handle);

#endif /* SONIVEX_SURROUND_H */
