#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace sonivex_tool {

/** Returns how many bytes of audio the header of a WAV file states, which libavformat does not tell if fewer
 *  are there. Returns nothing for other files, for what is not a file, and for the placeholders of writers
 *  that did not know the length. */
std::optional<int64_t> statedWavBytes(const std::string& path);

/** Returns true if a WAV file states a placeholder instead of the length of its audio, because its writer
 *  could not go back to enter it, for example in a pipe.
 *
 *  @param head the file's first bytes, up to the audio; false if the audio begins later */
bool isWavOfUnknownLength(const std::string& head);

}  // namespace sonivex_tool
