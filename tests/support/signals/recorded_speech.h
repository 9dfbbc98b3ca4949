// Recorded speech from the package alsa-utils: one spoken announcement per loudspeaker, 48 kHz mono.
#pragma once

#include <string>

#include "support/signals/signals.h"

namespace test {

/** Returns the samples of a recording, for example "Front_Center".
 *  @throws std::runtime_error if the file is missing, with instructions to install it, or if it is not a
 *  16-bit mono WAV file. */
Pcm recordedSpeech(const std::string& name);

/** Returns interleaved speech with a different announcement in each of up to 8 channels. */
Pcm recordedSpeech(int channels);

}  // namespace test
