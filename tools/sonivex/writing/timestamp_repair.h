#pragma once

#include <cstdint>
#include <optional>

namespace sonivex_tool {

/** Timestamps of a packet, in the time base of its stream; AV_NOPTS_VALUE where unknown. */
struct PacketTimes {
    int64_t pts = 0;
    int64_t dts = 0;
    int64_t duration = 0;  // 0 if unknown

    bool operator==(const PacketTimes&) const = default;
};

/** Makes the timestamps of a copied stream such that a muxer accepts them, and leaves good ones alone.
 *
 * A muxer refuses packets without timestamps, packets that are decoded after they are shown, and decoding
 * times
 * that do not grow. Damaged files and some old formats have all of them. */
class TimestampRepair {
  public:
    /** @param is_strict the muxer refuses equal decoding times in a row
     * @param reorder_delay packets that are decoded before the first one is shown (B-frames); 0 if they are
     * stored
     *     in the order in which they are shown */
    TimestampRepair(bool is_strict, int reorder_delay)
        : is_strict_(is_strict), reorder_delay_(reorder_delay) {}

    /** Returns the times to use for the next packet. */
    PacketTimes repair(PacketTimes times);

    /** The number of packets so far whose times are not those of the input. A decoding time that the input
     * does not
     * state does not count. */
    uint64_t repaired() const { return repaired_; }

  private:
    bool is_strict_;
    int reorder_delay_;
    std::optional<int64_t> last_dts_;
    int64_t last_duration_ = 0;
    uint64_t repaired_ = 0;
};

}  // namespace sonivex_tool
