#pragma once

#include <optional>

#include "av_objects.h"

namespace sonivex_tool {

/** Returns how much later than its file a stream begins, in seconds; 0 if it begins with its file, or if no
 *  stream of the file has a known start.
 * @param position_s of the stream's first decoded frame, on the container's clock
 * @return nothing if the stream begins later than is possible: after the end of the file, or after a day */
std::optional<double> leadIn_s(const AVFormatContext& container, const AVStream& stream, double position_s);

}  // namespace sonivex_tool
