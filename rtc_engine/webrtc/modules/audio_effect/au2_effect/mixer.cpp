#include "mixer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>
#include <new>

#include "channel_split_merge.h"
#include "float_rules.h"
#include "pcm.h"

const char VerString[] = "88";

namespace {

// An array of floats that starts on a cache line. It comes from an ordinary allocation, which is faster than
// an aligned one.
class FloatBlock {
  public:
    FloatBlock() = default;
    // Leaves the floats uninitialised. data() is null if memory runs out.
    explicit FloatBlock(int count) : memory_(new (std::nothrow) float[withSpare(count)]) {}

    float* data() const {
        void* start = memory_.get();
        std::size_t bytes = sonivex::kCacheLineBytes;
        return start == nullptr ? nullptr
                                : static_cast<float*>(std::align(sonivex::kCacheLineBytes, 1, start, bytes));
    }

  private:
    static std::size_t withSpare(int count) {
        return static_cast<std::size_t>(count) + sonivex::kCacheLineBytes / sizeof(float);
    }

    std::unique_ptr<float[]> memory_;
};

constexpr int kNoMemoryForSum = -1;
constexpr int kNoMemoryForChannels = -2;

// Returns 10^(gain / 20), with the quotient in float and the power in double.
float factorOfGain(float gain_db) {
    return static_cast<float>(std::pow(10.0, static_cast<double>(gain_db / 20.0F)));
}

void addInputs(const std::int16_t* const* inputs, const float* gains, bool gains_are_in_db, int input_count,
               int sample_count, float* sum) {
    for (int k = 0; k < input_count; ++k) {
        float factor = 1.0F;
        if (gains != nullptr) factor = gains_are_in_db ? factorOfGain(gains[k]) : gains[k];
        sonivex::addScaledInt16(inputs[k], factor, sample_count, sum);
    }
}

}  // namespace

int mixcreat(MixerState** mixer) {
    std::printf("mix Version: %s.\n", VerString);
    *mixer = makeMixer();
    return *mixer == nullptr ? -1 : 0;
}

MixerState* makeMixer() {
    return new (std::nothrow) MixerState{};
}

void mixinit(MixerState* mixer, int channel_count, int per_sample_detect, float level) {
    if (channel_count < 1 || channel_count > kMaxMixerChannels) {
        *mixer = MixerState{};
        return;
    }
    mixer->channelCount = channel_count;
    for (PeakLimiterState& limiter : mixer->limiters) {
        limiter_reset(&limiter);
        limiter.threshold = static_cast<float>(static_cast<double>(level) * sonivex::kCeilingInt16Units);
        limiter.perSampleDetect = per_sample_detect;
    }
    mixer->gainDb = 0.0F;
    mixer->gainInitialised = 0;
}

int mixproc(MixerState* mixer, const std::int16_t* const* inputs, const float* gains, int gains_in_db,
            int input_count, int sample_count, std::int16_t* output) {
    if (mixer->channelCount < 1) return kNoMemoryForChannels;
    if (sample_count < 1) return 0;

    const int channels = mixer->channelCount;
    const int frames = sample_count / channels;

    const FloatBlock sum_block(sample_count);
    float* const sum = sum_block.data();
    if (sum == nullptr) return kNoMemoryForSum;

    std::array<FloatBlock, kMaxMixerChannels> channel_blocks;
    std::array<float*, kMaxMixerChannels> buffers{};
    for (std::size_t c = 0; c < static_cast<std::size_t>(channels); ++c) {
        channel_blocks[c] = FloatBlock(frames);
        buffers[c] = channel_blocks[c].data();
        if (buffers[c] == nullptr) return kNoMemoryForChannels;
    }
    return mixWith(mixer, inputs, gains, gains_in_db, input_count, sample_count, {sum, buffers.data()},
                   output);
}

int mixWith(MixerState* mixer, const std::int16_t* const* inputs, const float* gains, int gains_in_db,
            int input_count, int sample_count, const MixerBuffers& buffers, std::int16_t* output) {
    if (sample_count < 1) return 0;
    const int channels = mixer->channelCount;
    const int frames = sample_count / channels;
    float* const sum = buffers.sum;
    std::fill_n(sum, sample_count, 0.0F);
    addInputs(inputs, gains, gains_in_db != 0, input_count, sample_count, sum);

    if (channels == 1) {
        // A mono sum needs no split or merge.
        const int has_engaged = limiter_proc(&mixer->limiters[0], sum, frames, buffers.channels[0]);
        sonivex::floatToInt16(buffers.channels[0], frames, output);
        return has_engaged;
    }

    ChannelSplit_f(sum, sample_count, buffers.channels, channels);
    bool has_engaged = false;
    for (std::size_t c = 0; c < static_cast<std::size_t>(channels); ++c) {
        float* const channel = buffers.channels[c];
        if (limiter_proc(&mixer->limiters[c], channel, frames, channel) != 0) has_engaged = true;
    }
    ChannelMerge_f(sum, frames, buffers.channels, channels);

    sonivex::floatToInt16(sum, sample_count, output);
    return has_engaged ? 1 : 0;
}

int mixfree(MixerState* mixer) {
    if (mixer == nullptr) return -1;
    delete mixer;
    return 0;
}
