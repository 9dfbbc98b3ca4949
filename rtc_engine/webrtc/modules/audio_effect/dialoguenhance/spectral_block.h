// Runs one hop of dialogue enhancement: block in, spectra, gains, block out.
#pragma once

#include <cstdint>

#include "dialoguenhance_handle.h"

namespace sonivex {

/** Process one block in place.
 *  @param block [h.hopSize][2] interleaved.
 *  [any] real-time safe */
void processDialogueBlock(DialoguEnhanceHandle& h, std::int16_t* block);

}  // namespace sonivex
