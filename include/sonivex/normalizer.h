/* Loudness normalizer: raises quiet programme material by up to 20 dB and never clips.
 *
 *   block      = 512 frames of all channels
 *   gain_db    = 20 at first; falls by 3 dB or more, but not below 0, when peak_dbfs + gain_db would pass 0
 *   out        = ceiling limiter(ceiling limiter(block * gain))          both at 0.99 of full scale
 *
 * Use: aem_CreateNormalizer, aem_ProcessNormalizer for every block, aem_ReleaseNormalizer.
 * Threads: a handle is used by one thread at a time; different handles are independent. */
#ifndef SONIVEX_NORMALIZER_H
#define SONIVEX_NORMALIZER_H

#include "sonivex/export.h"

/** Make a normalizer.
 *  @param channels   channel count of the stream; stored only, aem_ProcessNormalizer is told its own.
 *  @param sampleRate in Hz; stored only, nothing in the effect depends on it.
 *  @return a handle that the caller releases with aem_ReleaseNormalizer, or null when memory runs out.
 *  Prints the mixer's version line to standard output. Allocates about 430 KiB; not real-time safe. */
SONIVEX_API void* aem_CreateNormalizer(int channels, int sampleRate);

/** Normalize one call's worth of PCM.
 *  @param handle   from aem_CreateNormalizer.
 *  @param in       [frames][channels] interleaved signed 16-bit; only read. Must not overlap `out`.
 *  @param out      [frames][channels] interleaved signed 16-bit; the caller's memory, overwritten.
 *  @param frames   samples per channel. At 0 and below nothing is read or written.
 *  @param channels 1 to 20, the same in every call of a handle; outside this range nothing is read or
 *                  written.
 *  @return frames * channels, also when the output is silence; -1 for a null handle (logged), a null buffer,
 *          or a product beyond an int, with nothing touched.
 *
 *  Latency: input is processed in blocks of 512 frames, and a call is served only when the whole of it can
 *  be; until then it gets silence. Calls of a multiple of 512 frames have no delay; calls of a divisor of 512
 *  have 512 - frames. With any other size a call within the stream may find too little queued and be silent
 *  as well.
 *  At most 81919 samples wait on either side. What a call brings beyond that is dropped, sample by sample, so
 *  that a frame can be split; a call of more samples than that is never served.
 *
 *  Real time: no lock and no system call but for memory: the mixer's working blocks are allocated and freed
 *  once per block of 512 frames. A block for which there is none is silent. Needs about 41 KiB of stack. */
SONIVEX_API int aem_ProcessNormalizer(void* handle, const short* in, short* out, int frames, int channels);

/** Free a normalizer. A null handle is logged and otherwise harmless. */
SONIVEX_API void aem_ReleaseNormalizer(void* handle);

#endif /* SONIVEX_NORMALIZER_H */
