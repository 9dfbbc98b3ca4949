#include "sample_ring.h"

#include <algorithm>
#include <cassert>

namespace sonivex {
namespace {

std::int32_t wrapped(std::int32_t index) {
    return index >= kRingSamples ? index - kRingSamples : index;
}

}  // namespace

void clearRing(SampleRing& ring) {
    ring.readIndex = 0;
    ring.writeIndex = 0;
}

int fillLevel(const SampleRing& ring) {
    return (ring.writeIndex - ring.readIndex + kRingSamples) % kRingSamples;
}

int writeSamples(SampleRing& ring, const std::int16_t* in, int count) {
    const int accepted = std::clamp(count, 0, kRingCapacitySamples - fillLevel(ring));
    if (accepted == 0) return 0;

    const std::int32_t first = wrapped(ring.writeIndex + 1);
    const int before_end = std::min(accepted, kRingSamples - first);
    std::copy_n(in, before_end, ring.data + first);
    std::copy_n(in + before_end, accepted - before_end, ring.data);
    ring.writeIndex = wrapped(ring.writeIndex + accepted);
    return accepted;
}

void readSamples(SampleRing& ring, std::int16_t* out, int count) {
    assert(count >= 0 && count <= fillLevel(ring));
    if (count == 0) return;

    const std::int32_t first = wrapped(ring.readIndex + 1);
    const int before_end = std::min(count, kRingSamples - first);
    std::copy_n(ring.data + first, before_end, out);
    std::copy_n(ring.data, count - before_end, out + before_end);
    ring.readIndex = wrapped(ring.readIndex + count);
}

}  // namespace sonivex
