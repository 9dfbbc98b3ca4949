/* Dialogue enhancement: lifts what both channels of a stereo stream share, where that is what changes.
 *
 *   frame      = N samples of each channel under a sine window, a new one every N/4       L, R: its spectra
 *   centre     = (1 - |L - R| / |L + R|) / 2 * (L + R)
 *   p          = (flux(centre) / (flux(centre) + flux(L - R)) - 0.5) * voice_level, held to 0..1
 *   presence   = 0.9 * presence + 0.1 * p
 *   L         *= gain_floor + gain_scale * presence * |L|^2 / (|L|^2 + |L - R|^2)         R likewise
 *   out        = peak limiter(overlapping frames added / 1.5)               at 0.99 of full scale
 *
 * flux is the sum over the bins of the squared change of magnitude since the frame before.
 *
 * Use: aem_CreateDialoguEnhance, aem_ProcessDialoguEnhance for every block, aem_ReleaseDialoguEnhance.
 * Threads: a handle is used by one thread at a time; different handles are independent. */
#ifndef SONIVEX_DIALOGUENHANCE_H
#define SONIVEX_DIALOGUENHANCE_H

#include "sonivex/export.h"

/** Make a dialogue enhancer.
 *  @param channels   channel count of the stream; stored only, the effect is for stereo.
 *  @param sampleRate in Hz. Up to 50000 the transform has N = 2048 points, up to 100000 4096, above that
 *                    8192. Any number is taken.
 *  @param gainFloor  gain of a bin without dialogue, linear; usually 1.
 *  @param gainScale  what full presence adds to the gain of a bin that is all centre, linear; usually 1.
 *  @param voiceLevel sensitivity of the presence, usually 1. At 0 the presence stays 0; at 2 and above the
 *                    same material in both channels brings it to 1. Below 0 it answers to the sides instead.
 *  @return a handle that the caller releases with aem_ReleaseDialoguEnhance, or null: memory has run out
 *          (a line on standard output when it was the handle's own), or gainFloor, gainScale or voiceLevel is
 *          not finite as a float.
 *  Allocates about 525 KiB (4096 points: 635, 8192: 860); not real-time safe. */
SONIVEX_API void* aem_CreateDialoguEnhance(int channels, int sampleRate, double gainFloor, double gainScale,
                                           double voiceLevel);

/** Enhance one call's worth of PCM.
 *  @param handle     from aem_CreateDialoguEnhance.
 *  @param in         [frames][2] interleaved signed 16-bit; only read. Must not overlap `out`.
 *  @param out        [frames][2] interleaved signed 16-bit; the caller's memory, overwritten.
 *  @param frames     samples per channel. At 0 and below nothing is read or written.
 *  @param sampleRate not used; the rate given at creation counts.
 *  @return 2 * frames, also when the output is silence; -1 for a null handle (logged), a null buffer, or a
 *          sample count beyond an int, with nothing touched.
 *
 *  Level: material that the gains leave alone comes out 4/3 * 0.998 (+2.5 dB) as loud as it went in, until
 *  the limiter holds it.
 *
 *  Latency: the frames overlap by three hops of N/4 frames (512, 1024 or 2048), so sound comes 3 * N/4
 *  frames after it went in. On top of that input is processed in blocks of a hop, and a call is served only
 *  when the whole of it can be; until then it gets silence. Calls of a multiple of the hop have no further
 *  delay; calls of a divisor have hop - frames. With any other size a call within the stream may find too
 *  little queued and be silent as well.
 *  At most 81919 samples wait on either side. What a call brings beyond that is dropped, sample by sample,
 *  so that a frame can be split; a call of more frames than 40959 is never served.
 *
 *  The output can differ by one between processors: the transforms are libavutil's, which round differently.
 *
 *  Real-time safe: no lock, no allocation, no system call. Needs about 9 KiB of stack, and what the
 *  transforms take. */
SONIVEX_API int aem_ProcessDialoguEnhance(void* handle, const short* in, short* out, int frames,
                                          int sampleRate);

/** Free a dialogue enhancer. A null handle is logged and otherwise harmless. */
SONIVEX_API void aem_ReleaseDialoguEnhance(void* handle);

#endif /* SONIVEX_DIALOGUENHANCE_H */
