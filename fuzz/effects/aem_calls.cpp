#include "aem_calls.h"

#include <algorithm>
#include <cstddef>
#include <limits>
#include <vector>

#include "sonivex/log_bridge.h"
#include "stream_check.h"
#include "support/guarded_samples.h"
#include "support/promise.h"

namespace fuzz {
namespace {

constexpr int kMostFrames = 4096;      // of one input, in ordinary calls
constexpr int kLongest_frames = 2048;  // of an ordinary call
constexpr std::int16_t kMark = 0x2B2B;

/** The length of a call: any short one, or one that has something to do with the block. */
int callLength(ByteStream& stream, int kind, int block_frames) {
    switch (kind % 6) {
        case 0:
            return 1 + stream.byte();
        case 1:
            return block_frames;
        case 2:
            return block_frames * stream.inRange(1, 4);
        case 3:
            return block_frames / stream.inRange(1, 16);
        case 4:
            return block_frames + stream.inRange(-2, 2);
        default:
            return stream.inRange(1, kLongest_frames);
    }
}

std::vector<std::int16_t> samplesFor(ByteStream& stream, const AemEffect& effect, int frames) {
    std::vector<std::int16_t> in(static_cast<std::size_t>(frames) *
                                 static_cast<std::size_t>(effect.width_in));
    fillWithSamples(in, stream);
    return in;
}

/** Makes a call that the effect must refuse or that has nothing to process. */
void makeEmptyCall(ByteStream& stream, const AemEffect& effect) {
    constexpr int kMost = std::numeric_limits<int>::max();
    constexpr int kLeast = std::numeric_limits<int>::min();
    const std::vector<std::int16_t> in(64);
    GuardedSamples<std::int16_t> out(64, kMark);
    const int too_many = effect.width_out == 1 ? kMost : kMost / effect.width_out + 1;
    int result = 0;
    int expected = effect.refusal;
    switch (stream.byte() % 6) {
        case 0:
            result = effect.process(nullptr, in.data(), out.data(), 1);
            break;
        case 1:
            result = effect.process(effect.handle, nullptr, out.data(), 1);
            break;
        case 2:
            result = effect.process(effect.handle, in.data(), nullptr, 1);
            break;
        case 3:
            // One channel has no such count.
            if (effect.width_out == 1) return;
            result = effect.process(effect.handle, in.data(), out.data(), stream.inRange(too_many, kMost));
            break;
        case 4:
            if (effect.width_out == 1) return;
            result = effect.process(effect.handle, in.data(), out.data(),
                                    stream.inRange(kLeast, kLeast / effect.width_out - 1));
            break;
        default: {
            const int frames = stream.inRange(-1000, 0);
            result = effect.process(effect.handle, in.data(), out.data(), frames);
            expected = frames * effect.width_out;
        }
    }
    require(result == expected, "a refused or empty call returns what its header says");
    out.requireUntouched();
}

/** Makes a call longer than the rings, which therefore loses samples and stays silent. */
void makeOverlongCall(ByteStream& stream, const AemEffect& effect, StreamCheck& check) {
    const int ring_frames = 81919 / std::min(effect.width_in, effect.width_out);
    const auto in = samplesFor(stream, effect, ring_frames + stream.inRange(-3, 300));
    check.call(in);
}

}  // namespace

void makeAemCalls(ByteStream& stream, const AemEffect& effect, const AemEffect& reference) {
    StreamCheck check(effect, reference);
    bool has_been_overlong = false;
    for (int frames_left = kMostFrames; frames_left > 0 && !stream.isEmpty();) {
        const int kind = stream.byte();
        if (kind >= 0xF0) {
            makeEmptyCall(stream, effect);
        } else if (kind == 0xEF && !has_been_overlong) {
            makeOverlongCall(stream, effect, check);
            has_been_overlong = true;  // the most costly call, so only once
        } else {
            const int frames = callLength(stream, kind, effect.block_frames);
            check.call(samplesFor(stream, effect, frames));
            frames_left -= frames;
        }
    }
}

void silenceEffects() {
    logWriterFun = nullptr;
}

}  // namespace fuzz
