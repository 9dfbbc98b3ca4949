#pragma once

#include <optional>
#include <string>

#include "av_objects.h"

namespace sonivex_tool {

/** Returns the time at which an audio stream ends by what its container states, on the container's clock, in
 *  seconds. Returns nothing if the container states none, or one that only estimates: from the bit rate, from
 *  the timestamps at the end of the file, or with a video that may be longer. */
std::optional<double> statedEnd_s(const std::string& path, const AVFormatContext& container,
                                  const AVStream& audio);

/** Returns the time at which the first audio or video stream of a file begins, on the container's clock, in
 *  seconds, or nothing if none of them tells. Pictures such as a cover do not count. */
std::optional<double> presentationStart_s(const AVFormatContext& container);

/** Returns the length of a stream, or of its file, in seconds, or nothing. It may be an estimate. */
std::optional<double> statedLength_s(const AVFormatContext& container, const AVStream& stream);

/** Returns true if a file states neither timestamps nor a length, so that both are guessed. */
bool isBareStream(const AVFormatContext& container);

/** Returns a stream's own start, or nothing, on the container's clock, in seconds. */
std::optional<double> startOf_s(const AVStream& stream);

}  // namespace sonivex_tool
