#pragma once

#include <optional>
#include <string>
#include <vector>

namespace sonivex_tool {

/** An audio stream as the container describes it. */
struct AudioTrack {
    std::string language;  // ISO 639 code, "eng" or "en"; one line; empty if unknown
    std::string title;     // one line; empty if there is none
    bool is_default = false;
};

/** Chooses an audio stream.
 *
 * Without a wish, the stream that the container marks as default is chosen, or else the first. A wish is the
 * number of a stream, from 0, or its language as an ISO 639 code of two or three letters, in any case. Of
 * several streams in one language, the default one is chosen, or else the first.
 * @return index into `tracks`, or nothing if no stream answers the wish */
std::optional<size_t> chooseTrack(const std::vector<AudioTrack>& tracks,
                                  const std::optional<std::string>& wish);

/** Lists the streams for an error message: "0 (eng, default), 1 (deu)". */
std::string listOf(const std::vector<AudioTrack>& tracks);

}  // namespace sonivex_tool
