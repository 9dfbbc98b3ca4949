#include "lead_in.h"

#include <algorithm>

#include "stated_end.h"

namespace sonivex_tool {
namespace {

// A stream that begins so much later than its file begins with it: timestamps are rounded to 1 ms.
constexpr double kSameStart_s = 0.002;
// A first frame may come so much after the start of its own stream: a decoder gives no samples for priming.
constexpr double kLongestPriming_s = 0.5;
// A day. No recording is silent for longer before its sound begins.
constexpr double kLongestLeadIn_s = 24.0 * 3600.0;

double longestLeadIn_s(const AVFormatContext& container) {
    const bool is_stated = container.duration != AV_NOPTS_VALUE && container.duration > 0 &&
                           container.duration_estimation_method != AVFMT_DURATION_FROM_BITRATE;
    if (!is_stated) return kLongestLeadIn_s;
    return std::min(static_cast<double>(container.duration) / AV_TIME_BASE, kLongestLeadIn_s);
}

}  // namespace

std::optional<double> leadIn_s(const AVFormatContext& container, const AVStream& stream, double position_s) {
    const std::optional<double> file_start_s = presentationStart_s(container);
    if (!file_start_s) return 0.0;
    // The start that libavformat states is unknown, or a guess, if the first packet is far into the file.
    std::optional<double> own_start_s = startOf_s(stream);
    if (!own_start_s || position_s - *own_start_s > kLongestPriming_s) own_start_s = position_s;
    if (*own_start_s - *file_start_s <= kSameStart_s) return 0.0;
    const double lead_in_s = std::max(position_s - *file_start_s, 0.0);
    if (lead_in_s > longestLeadIn_s(container)) return std::nullopt;
    return lead_in_s;
}

}  // namespace sonivex_tool
