// Test scene for dialogue enhancement: speech in the centre of a stereo image, another sound at each side.
#pragma once

#include "support/signals/signals.h"

namespace test {

enum class Sides {
    kNoise,   // independent noise on each side, falling by 6 dB per octave above 1 kHz
    kVoices,  // other announcements, different ones on each side
};

/** Three interleaved stereo signals of equal length at 48 kHz: mix = speech + background. The mix peaks at
 *  9000, so an effect can add 11 dB before a limiter engages. */
struct DialogueScene {
    Pcm speech;  // four announcements in sequence, identical in both channels
    Pcm background;
    Pcm mix;
};

/** @param speech_db RMS level of the speech above the background, pauses included; dB, -20 to 40. */
DialogueScene dialogueScene(Sides sides, double speech_db);

}  // namespace test
