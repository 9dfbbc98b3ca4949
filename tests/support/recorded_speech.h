// Real recordings: one spoken announcement per loudspeaker, 48 kHz mono, from the package alsa-utils.
#pragma once

#include <string>

#include "support/signals.h"

namespace test {

/** Samples of a recording, for example "Front_Center". Throws std::runtime_error, with the way to get it,
 * when it is not there or no 16-bit mono WAV. */
Pcm recordedSpeech(const std::string& name);

/** Every channel says something else, up to 8 channels. */
Pcm recordedSpeech(int channels);

}  // namespace test
