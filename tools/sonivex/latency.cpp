#include "latency.h"

#include <numeric>

namespace sonivex_tool {

std::optional<int64_t> constantDelayFrames(int blockFrames, int callFrames) {
    const int64_t block = blockFrames;
    const int64_t call = callFrames;
    // `queued` depends on the total modulo the block, so it repeats after this many calls; twice that sees
    // every state with the full lead.
    const int64_t calls = 2 * block / std::gcd(block, call) + 2;
    int64_t queued = 0;
    int64_t ready = 0;
    int64_t delay = 0;
    bool hasSounded = false;
    for (int64_t i = 0; i < calls; ++i) {
        queued += call;
        ready += queued / block * block;
        queued %= block;
        if (ready >= call) {
            ready -= call;
            hasSounded = true;
        } else if (hasSounded) {
            return std::nullopt;
        } else {
            delay += call;
        }
    }
    return delay;
}

}  // namespace sonivex_tool
