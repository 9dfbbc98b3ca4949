// Functions of dialogue enhancement for the common interface of all effects (api/), beyond the C functions.
#pragma once

namespace sonivex {

/** Creates a dialogue enhancer like aem_CreateDialoguEnhance with a gain floor and a gain scale of 1, but
 *  prints nothing.
 *  @param voice_level finite as a float.
 *  @return a handle for aem_ProcessDialoguEnhance and aem_ReleaseDialoguEnhance; null when memory runs out.
 *  [any, concurrent] not real-time safe: allocates */
void* createDialogue(int sample_rate_hz, double voice_level);

/** Makes a handle as it was when it was created, except for the voice level, which stays. The output that
 *  follows has the same bits as that of a new handle with this level.
 *  @param handle from createDialogue or aem_CreateDialoguEnhance; not null.
 *  [any] real-time safe */
void resetDialogue(void* handle);

/** Sets the sensitivity of the presence from the next block on.
 *  @param voice_level finite as a float.
 *  [any] real-time safe */
void setDialogueVoiceLevel(void* handle, double voice_level);

}  // namespace sonivex
