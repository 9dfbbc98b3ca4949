// Functions of the normalizer for the common interface of all effects (api/), beyond the C functions.
#pragma once

namespace sonivex {

/** Creates a normalizer like aem_CreateNormalizer, but prints nothing, and its processing allocates nothing.
 *  The output has the same bits.
 *  @return a handle for aem_ProcessNormalizer and aem_ReleaseNormalizer; null when memory runs out.
 *  [any, concurrent] not real-time safe: allocates */
void* createNormalizer(int channels, int sample_rate_hz);

/** Makes a handle as it was when it was created, with the gain at its start. The output that follows has the
 *  same bits as that of a new handle.
 *  @param handle from createNormalizer or aem_CreateNormalizer; not null.
 *  [any] real-time safe */
void resetNormalizer(void* handle);

}  // namespace sonivex
