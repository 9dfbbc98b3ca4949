/* Loudness normalizer: raises quiet programme material by up to 20 dB and never clips.
 *
 *   block      = 512 frames of all channels
 *   over_db    = peak_dbfs(block) + gain_db                              gain_db starts at 20
 *   gain_db    = max(0, gain_db - max(3, over_db))  if over_db > 0       the gain never rises
 *   out        = ceiling limiter(ceiling limiter(block * gain))          both at 0.99 of full scale
 *
 * Use: call aem_CreateNormalizer, aem_ProcessNormalizer for every block of PCM, then aem_ReleaseNormalizer.
 * Threads: one thread at a time may use a handle; different handles are independent. */
#ifndef SONIVEX_NORMALIZER_H
#define SONIVEX_NORMALIZER_H

#include "sonivex/export.h"

/** Creates a normalizer.
 *  @param channels   channel count of the stream; stored but not used, since aem_ProcessNormalizer takes its
 *                    own.
 *  @param sampleRate in Hz; stored but not used, since nothing in the effect depends on it.
 *  @return a handle, which the caller releases with aem_ReleaseNormalizer, or null when memory runs out (a
 *          line on standard output says so).
 *  Prints the mixer's version line to standard output. Allocates about 430 KiB.
 *  [any] not real-time safe (allocates, prints) */
SONIVEX_API void* aem_CreateNormalizer(int channels, int sampleRate);

/** Normalizes one call's worth of PCM.
 *  @param handle   from aem_CreateNormalizer.
 *  @param in       [frames][channels] interleaved signed 16-bit; read only. Must not overlap `out`.
 *  @param out      [frames][channels] interleaved signed 16-bit; the caller's memory, overwritten.
 *  @param frames   samples per channel. If it is 0 or negative, neither buffer is accessed.
 *  @param channels 1 to 20, the same in every call of a handle. Outside this range neither buffer is
 *                  accessed.
 *  @return frames * channels, even when the output is silence. -1, with nothing accessed, for a null handle
 *          (logged), a null buffer or a product that does not fit an int.
 *
 *  Latency: the effect processes blocks of 512 frames, and it serves a call only when the whole output of the
 *  call is ready; until then the call returns silence. Calls of a multiple of 512 frames have no delay; calls
 *  of a divisor of 512 have 512 - frames. With any other size, a call in mid-stream may find too little
 *  output queued and return silence as well.
 *  At most 81919 samples wait on the input side and on the output side. Samples beyond that are dropped one
 *  by one, so a frame can be split. A call of more samples than that always returns silence.
 *
 *  Uses about 41 KiB of stack.
 *  [any] not strictly real-time safe: it takes no lock, but the mixer allocates and frees its working blocks
 *  once per block of 512 frames. A block without memory is silent. */
SONIVEX_API int aem_ProcessNormalizer(void* handle, const short* in, short* out, int frames, int channels);

/** Releases a normalizer. A null handle is logged and has no other effect.
 *  [any] not real-time safe (frees memory) */
SONIVEX_API void aem_ReleaseNormalizer(void* handle);

#endif /* SONIVEX_NORMALIZER_H */
