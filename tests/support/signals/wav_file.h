// WAV files: written for listening to signals of a failed comparison, read for recordings.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "support/signals/signals.h"

namespace test {

/** Returns a WAV file of 16-bit PCM. @param samples interleaved */
std::string wavOf(const Pcm& samples, int channels, std::uint32_t rate_hz);

/** Returns a WAV file of 32-bit floats. @param samples interleaved, full scale 1 */
std::string wavOf(const std::vector<float>& samples, int channels, std::uint32_t rate_hz);

struct Wav {
    int channels = 0;
    std::uint32_t rate_hz = 0;
    Pcm pcm;                    // interleaved; empty if the file holds floats
    std::vector<float> floats;  // interleaved; empty if the file holds 16-bit PCM
};

/** Parses a WAV file of 16-bit PCM or 32-bit floats; skips chunks other than "fmt " and "data".
 *  @param bytes the whole file
 *  @param path  names the file in messages
 *  @throws std::runtime_error if it is not such a file, or ends before its last sample */
Wav parseWav(const std::string& bytes, const std::string& path);

}  // namespace test
