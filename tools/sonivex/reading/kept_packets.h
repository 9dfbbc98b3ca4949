#pragma once

#include <cstdint>
#include <deque>
#include <limits>
#include <vector>

#include "av_objects.h"

namespace sonivex_tool {

/** Packets that wait to be delivered, in the file's order, within a limit of memory. */
class KeptPackets {
  public:
    /** @param most_bytes of the packets' data; beyond it, all of them are given up */
    explicit KeptPackets(int64_t most_bytes) : most_bytes_(most_bytes) {}

    /** Keeps all packets from now on, if the limit was not exceeded: for a reader that takes each at once. */
    void removeLimit() { most_bytes_ = std::numeric_limits<int64_t>::max(); }

    /** Appends a packet. If that exceeds the limit, frees all packets, and keeps none from then on. */
    void push(PacketPtr packet);
    /** Removes and returns the first packet, or null if there is none. */
    PacketPtr pop();
    /** Drops the packets of all streams but those that are true here. */
    void keepOnly(const std::vector<bool>& streams);

    /** Returns true if the limit was exceeded. */
    bool isGivenUp() const { return is_given_up_; }

  private:
    int64_t most_bytes_;
    int64_t bytes_ = 0;
    bool is_given_up_ = false;
    std::deque<PacketPtr> packets_;
};

}  // namespace sonivex_tool
