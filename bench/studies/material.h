// The material of the studies. Speech and babble are recordings; everything else is synthesised, and the same
// in every run.
#pragma once

#include <cstdint>

#include "sound.h"

namespace study {

/** Four recorded announcements with pauses, in sequence, repeated up to the length. */
Sound speech(std::size_t frames);

/** Eight recorded announcements at once. Other seeds say other words at a time. */
Sound babble(std::uint64_t seed, std::size_t frames);

/** White noise, uniform over -1 to 1. */
Sound whiteNoise(std::uint64_t seed, std::size_t frames);

/** Noise that falls by 3 dB per octave from 20 Hz on, with nothing below. */
Sound pinkNoise(std::uint64_t seed, std::size_t frames);

/** Noise with the spectrum of speech: strongest from 100 to 500 Hz, falling by 6 dB per octave on either side
 *  (Byrne et al. 1994). */
Sound speechNoise(std::uint64_t seed, std::size_t frames);

/** Synthesised music in stereo: bass and drums in the middle, a plucked instrument left of it, chords right
 *  of it, a cymbal farther right. */
Channels music(std::size_t frames);

/** The drums of the music alone. */
Channels drums(std::size_t frames);

/** Synthesised effects of a film in stereo: a blast every three seconds, partly the same on both sides, and
 *  quiet ambience, independent on each side. */
Channels filmEffects(std::size_t frames);

}  // namespace study
