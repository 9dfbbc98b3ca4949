#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace sonivex_tool {

/** Returns how many bytes of audio the header of a WAV file states, which libavformat does not tell if fewer
 *  are there. Returns nothing for other files, for what is not a file, and for the placeholders of writers
 *  that did not know the length. */
std::optional<int64_t> statedWavBytes(const std::string& path);

inline constexpr size_t kWavHeadBytes = 8;  // the name of the container and its length

/** Returns true if the first 8 bytes of a file are those of a WAV file whose writer could not go back to
 *  enter its length, because it wrote into a pipe. A length next to 2^31, which files can have, does not
 *  count. */
bool isWavOfUnknownLength(std::string_view head);

}  // namespace sonivex_tool
