#include "kept_packets.h"

#include <utility>

namespace sonivex_tool {

void KeptPackets::push(PacketPtr packet) {
    if (is_given_up_) return;
    bytes_ += packet->size;
    if (bytes_ > most_bytes_) {
        is_given_up_ = true;
        packets_.clear();
        return;
    }
    packets_.push_back(std::move(packet));
}

PacketPtr KeptPackets::pop() {
    if (packets_.empty()) return nullptr;
    PacketPtr packet = std::move(packets_.front());
    packets_.pop_front();
    bytes_ -= packet->size;
    return packet;
}

void KeptPackets::keepOnly(const std::vector<bool>& streams) {
    std::erase_if(packets_, [&](const PacketPtr& packet) {
        const bool is_dropped = !streams[static_cast<size_t>(packet->stream_index)];
        if (is_dropped) bytes_ -= packet->size;
        return is_dropped;
    });
}

}  // namespace sonivex_tool
