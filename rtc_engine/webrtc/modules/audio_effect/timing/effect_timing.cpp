#include "effect_timing.h"

#include <numeric>

#include "response_formats.h"

namespace sonivex {
namespace {

// A frame of dialogue enhancement lasts about 43 ms at 48, 96 and 192 kHz.
constexpr int kHopOfCommonRates_frames = 512;
constexpr int kHopOfHighRates_frames = 1024;
constexpr int kHighRatesAbove_hz = 50000;
constexpr int kVeryHighRatesAbove_hz = 100000;
// A frame has four hops. Sound comes out when the last frame that contains it has been added.
constexpr int kHopsOfDelay = 3;

int dialogueHop_frames(int sample_rate_hz) {
    if (sample_rate_hz > kVeryHighRatesAbove_hz) return kDialogueLongestHop_frames;
    if (sample_rate_hz > kHighRatesAbove_hz) return kHopOfHighRates_frames;
    return kHopOfCommonRates_frames;
}

constexpr int tableFrames(const ResponseFormat& format) {
    return static_cast<int>(format.samples);
}

}  // namespace

EffectTiming surroundTiming(bool is_megabass, int channels) {
    EffectTiming timing = {.block_frames = kSurroundTimingBlock_frames};
    if (is_megabass) {
        // MegaBass convolves with a loudspeaker's response, then with that of the Audio stage. The cascade is
        // one frame shorter than both lengths together.
        timing.tail_frames = tableFrames(kSurroundFormat) + tableFrames(kAudioFormat) - 1;
    } else if (channels == 8) {
        timing.tail_frames = tableFrames(kBingo71Format);
    } else if (channels == 6) {
        timing.tail_frames = tableFrames(kBingo51Format);
    } else {
        timing.tail_frames = tableFrames(kBingo2Format);
    }
    return timing;
}

EffectTiming dialogueTiming(int sample_rate_hz) {
    const int hop_frames = dialogueHop_frames(sample_rate_hz);
    return {.block_frames = hop_frames, .own_delay_frames = kHopsOfDelay * hop_frames};
}

EffectTiming normalizerTiming() {
    return {.block_frames = kNormalizerTimingBlock_frames};
}

std::optional<int64_t> delayOfCalls_frames(int block_frames, int call_frames) {
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

std::optional<int64_t> delayInCalls_frames(const EffectTiming& timing, int call_frames) {
    if (timing.block_frames == 0) return 0;
    const auto queueing = delayOfCalls_frames(timing.block_frames, call_frames);
    if (!queueing) return std::nullopt;
    return *queueing + timing.own_delay_frames;
}

}  // namespace sonivex
