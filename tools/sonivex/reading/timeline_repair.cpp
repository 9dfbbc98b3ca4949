#include "timeline_repair.h"

#include <algorithm>
#include <cstdlib>

namespace sonivex_tool {
namespace {

int64_t rescaled(int64_t samples, int from_hz, int to_hz) {
    const int64_t seconds = samples / from_hz;
    return seconds * to_hz + samples % from_hz * to_hz / from_hz;
}

}  // namespace

int64_t TimelineRepair::agreedDeviation(std::span<const Placement> frames) const {
    std::optional<int64_t> agreed;
    int64_t expected = *expected_;
    for (const Placement& frame : frames) {
        if (frame.position) {
            const int64_t deviation = *frame.position - expected;
            if (agreed && (deviation < 0) != (*agreed < 0)) return 0;
            if (!agreed || std::abs(deviation) < std::abs(*agreed)) agreed = deviation;
        }
        expected += frame.length;
    }
    return agreed.value_or(0);
}

bool TimelineRepair::isJump(int64_t deviation) const {
    const int64_t target = *expected_ + deviation;
    if (deviation > 0)
        return deviation > samples(kLongestGap_s) || (latest_s_ && target > samples(*latest_s_));
    return overlaps_are_errors_ || -deviation > samples(kLongestOverlap_s) ||
           target < *first_ + samples(kRestart_s);
}

Correction TimelineRepair::place(std::span<const Placement> frames) {
    const Placement& frame = frames.front();
    Correction correction;
    if (rest_to_cut_ > 0) {
        correction.cut = std::min(rest_to_cut_, frame.length);
        rest_to_cut_ -= correction.cut;
        *expected_ += frame.length - correction.cut;
        return correction;
    }
    if (!expected_) {
        if (!frame.position) return correction;
        first_ = frame.position;
        expected_ = frame.position;
    }
    const int64_t agreed = agreedDeviation(frames);
    const bool is_step =
        frames.size() >= kFewestForStep && std::abs(agreed - last_deviation_) > samples(kJitter_s);
    const bool is_corrected = std::abs(agreed) > samples(is_step ? kJitter_s : kLargestDrift_s);
    if (!is_corrected) {
        if (frame.position) last_deviation_ = *frame.position - *expected_;
    } else {
        last_deviation_ = 0;
        correction.is_jump = isJump(agreed);
        if (correction.is_jump) {
            *expected_ += agreed;
        } else if (agreed > 0) {
            correction.silence = agreed;
            *expected_ += agreed;
        } else {
            correction.begins_overlap = true;
            correction.cut = std::min(-agreed, frame.length);
            rest_to_cut_ = -agreed - correction.cut;
        }
    }
    *expected_ += frame.length - correction.cut;
    return correction;
}

void TimelineRepair::setRate(int rate_hz) {
    if (expected_) expected_ = rescaled(*expected_, rate_hz_, rate_hz);
    if (first_) first_ = rescaled(*first_, rate_hz_, rate_hz);
    last_deviation_ = rescaled(last_deviation_, rate_hz_, rate_hz);
    rest_to_cut_ = rescaled(rest_to_cut_, rate_hz_, rate_hz);
    rate_hz_ = rate_hz;
}

std::optional<double> TimelineRepair::end_s() const {
    if (!expected_) return std::nullopt;
    return static_cast<double>(*expected_) / rate_hz_;
}

}  // namespace sonivex_tool
