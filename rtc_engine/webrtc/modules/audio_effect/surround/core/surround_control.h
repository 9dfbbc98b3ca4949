// Functions of surround for the common interface of all effects (api/), beyond the C functions.
#pragma once

namespace sonivex {

/** Tells whether there is a layout for a type and a channel count.
 *  [any, concurrent] real-time safe */
bool hasSurroundLayout(int type, int channels);

/** Creates a surround effect like aem_CreateSurround, but without a log line and without a leak.
 *  @return a handle for aem_ProcessSurround and aem_ReleaseSurround; null if there is no layout.
 *  Throws std::bad_alloc when memory runs out. [any, concurrent] not real-time safe: allocates */
void* createSurround(int channels, int sample_rate_hz, int type, int mode, int limiter);

/** Makes a handle as it was when it was created. The output that follows has the same bits as that of a new
 *  handle.
 *  @param handle from createSurround or aem_CreateSurround; not null.
 *  [any] real-time safe */
void resetSurround(void* handle);

}  // namespace sonivex
