#include "latency.h"

#include <numeric>

namespace sonivex_tool {

std::optional<int64_t> constantDelayFrames(int block_frames, int call_frames) {
    const int64_t block = block_frames;
    const int64_t call = call_frames;
    // `queued` equals the total modulo the block, so it repeats after block / gcd calls. Twice as many calls
    // visit every state after the lead has built up in full.
    const int64_t calls = 2 * block / std::gcd(block, call) + 2;
    int64_t queued = 0;
    int64_t ready = 0;
    int64_t delay = 0;
    bool has_sounded = false;
    for (int64_t i = 0; i < calls; ++i) {
        queued += call;
        ready += queued / block * block;
        queued %= block;
        if (ready >= call) {
            ready -= call;
            has_sounded = true;
        } else if (has_sounded) {
            return std::nullopt;
        } else {
            delay += call;
        }
    }
    return delay;
}

}  // namespace sonivex_tool
