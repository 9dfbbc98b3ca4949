// Somebody speaks in the middle of a stereo picture, and something else goes on at its sides.
#pragma once

#include "support/signals.h"

namespace test {

enum class Sides {
    kNoise,   // noise of each side's own, falling by 6 dB an octave from 1 kHz on
    kVoices,  // other people's announcements, others on either side
};

/** Interleaved stereo of 48 kHz, as long as each other: mix = speech + background. No peak passes 9000, so
 * that an effect may add 11 dB before anything limits it. */
struct DialogueScene {
    Pcm speech;  // four announcements, one after the other, the same in both channels
    Pcm background;
    Pcm mix;
};

/** @param speech_db rms of the speech over that of the background, pauses and all, in dB, -20 to 40. */
DialogueScene dialogueScene(Sides sides, double speech_db);

}  // namespace test
