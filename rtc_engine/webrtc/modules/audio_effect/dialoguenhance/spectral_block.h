// One hop of dialogue enhancement: block in, spectra, gains, block out.
#pragma once

#include <cstdint>

#include "dialoguenhance_handle.h"

namespace sonivex {

/** Process hopSize interleaved stereo frames in place. Real-time safe. */
void processDialogueBlock(DialoguEnhanceHandle& h, std::int16_t* block);

}  // namespace sonivex
