/* Dialogue enhancement for stereo: raises what both channels share while it changes more than the sides.
 *
 *   frame      = N samples of each channel under a sine window, hop N/4       L, R: the spectra of a frame
 *   centre     = (1 - |L - R| / |L + R|) / 2 * (L + R)
 *   p          = (flux(centre) / (flux(centre) + flux(L - R)) - 0.5) * voice_level, clamped to 0..1
 *   presence   = 0.9 * presence + 0.1 * p
 *   L         *= gain_floor + gain_scale * presence * |L|^2 / (|L|^2 + |L - R|^2)         R likewise
 *   out        = peak limiter(overlap-add of the windowed frames / 1.5)     at 0.99 of full scale
 *
 * flux is the sum over the bins of the squared change of magnitude since the previous frame.
 *
 * Use: call aem_CreateDialoguEnhance, aem_ProcessDialoguEnhance for every block of PCM, then
 * aem_ReleaseDialoguEnhance.
 * Threads: one thread at a time may use a handle; different handles are independent. */
#ifndef SONIVEX_DIALOGUENHANCE_H
#define SONIVEX_DIALOGUENHANCE_H

#include "sonivex/export.h"

/** Creates a dialogue enhancer.
 *  @param channels   channel count of the stream; stored but not used, since the effect is for stereo only.
 *  @param sampleRate in Hz; any value is accepted. It selects the transform length N: 2048 points up to
 *                    50000 Hz, 4096 up to 100000 Hz and 8192 above that.
 *  @param gainFloor  linear gain of a bin without dialogue; usually 1.
 *  @param gainScale  linear gain that full presence adds to a bin that lies wholly in the centre; usually 1.
 *  @param voiceLevel sensitivity of the presence; usually 1. At 0 the presence stays 0. At 2 and above,
 *                    identical channels bring it to 1. Below 0 the presence responds to the sides instead.
 *  @return a handle, which the caller releases with aem_ReleaseDialoguEnhance. Null if gainFloor, gainScale
 *          or voiceLevel is not finite as a float, or if memory runs out; if the handle itself cannot be
 *          allocated, a line on standard output says so.
 *  Allocates about 525 KiB (635 KiB for 4096 points; 860 KiB for 8192, 920 KiB with FFmpeg 7).
 *  [any] not real-time safe (allocates) */
SONIVEX_API void* aem_CreateDialoguEnhance(int channels, int sampleRate, double gainFloor, double gainScale,
                                           double voiceLevel);

/** Enhances one call's worth of PCM.
 *  @param handle     from aem_CreateDialoguEnhance.
 *  @param in         [frames][2] interleaved signed 16-bit; read only. Must not overlap `out`.
 *  @param out        [frames][2] interleaved signed 16-bit; the caller's memory, overwritten.
 *  @param frames     samples per channel. If it is 0 or negative, neither buffer is accessed.
 *  @param sampleRate ignored; the rate given at creation applies.
 *  @return 2 * frames, even when the output is silence. -1, with nothing accessed, for a null handle
 *          (logged), a null buffer or a sample count that does not fit an int.
 *
 *  Level: material that the gains leave unchanged comes out 4/3 * 0.998 (+2.5 dB) as loud as it went in,
 *  as long as the limiter does not engage.
 *
 *  Latency: the windows overlap by three hops of N/4 frames (512, 1024 or 2048), so sound comes out
 *  3 * N/4 frames after it went in. In addition, the effect processes blocks of one hop, and it serves a call
 *  only when the whole output of the call is ready; until then the call returns silence. This adds no delay
 *  to calls of a multiple of the hop, and hop - frames to calls of a divisor of the hop. With any other size,
 *  a call in mid-stream may find too little output queued and return silence as well.
 *  At most 81919 samples wait on the input side and on the output side. Samples beyond that are dropped one
 *  by one, so a frame can be split. A call of more than 40959 frames always returns silence.
 *
 *  The output may differ by one step between processors, because libavutil's transforms round differently.
 *
 *  Uses about 9 KiB of stack, plus what the transforms need.
 *  [any] real-time safe, except that a null handle is logged */
SONIVEX_API int aem_ProcessDialoguEnhance(void* handle, const short* in, short* out, int frames,
                                          int sampleRate);

/** Releases a dialogue enhancer. A null handle is logged and has no other effect.
 *  [any] not real-time safe (frees memory) */
SONIVEX_API void aem_ReleaseDialoguEnhance(void* handle);

#endif /* SONIVEX_DIALOGUENHANCE_H */
