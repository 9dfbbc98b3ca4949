#include "scalar_peak_limiter.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "float_rules.h"
#include "sliding_maximum.h"

namespace model {
namespace {

// 0.8999, 0.0999, 0.9999 and 0.0001 rounded to float; every bit of them affects the output.
constexpr float kSmoothingKeep = std::bit_cast<float>(std::uint32_t{0x3F665FD9});
constexpr float kSmoothingStep = std::bit_cast<float>(std::uint32_t{0x3DCC985F});
constexpr float kReleaseKeep = std::bit_cast<float>(std::uint32_t{0x3F7FF972});
constexpr float kReleaseStep = std::bit_cast<float>(std::uint32_t{0x38D1B717});

}  // namespace

bool limitPeaks(const sonivex::PeakLimiterFields& fields, const float* in, int count, float* out) {
    if (count < 1) return false;

    // Finds the peak before the first write, because `out` may be `in`.
    float block_peak = 0.0F;
    for (int i = 0; i < count; ++i) {
        const float magnitude = std::fabs(in[i]);
        block_peak = magnitude > block_peak ? magnitude : block_peak;
    }

    const float threshold = fields.threshold;
    const float idle_gain = fields.idle_gain;
    const std::int32_t tree_depth = fields.tree_depth;
    const std::int32_t tree_leaves = fields.tree_leaves;
    const std::int32_t index_mask = fields.index_mask;
    const bool detects_per_sample = fields.detects_per_sample != 0;
    float* const tree = fields.maximum_tree;
    float* const delay = fields.delay;

    float gain = fields.gain;
    float smoothed_gain = fields.smoothed_gain;
    std::int32_t write_index = fields.write_index;
    bool is_limiting = fields.is_limiting != 0;
    bool has_exceeded = false;

    for (int i = 0; i < count; ++i) {
        const float sample = in[i];
        const float magnitude = std::fabs(sample);
        // A NaN counts as level 0. In the tree it would stay forever, because comparisons with it are false.
        const float level = !detects_per_sample ? block_peak : magnitude >= 0.0F ? magnitude : 0.0F;
        if (level > threshold) {
            if (!is_limiting) std::fill_n(tree, sonivex::kLimiterTreeEntries, 0.0F);
            is_limiting = true;
            has_exceeded = true;
        }

        float target = idle_gain;
        if (is_limiting) {
            const float peak =
                sonivex::insertIntoMaximumTree(tree, write_index, level, tree_depth, tree_leaves);
            if (threshold >= peak) {
                is_limiting = false;
            } else {
                target = threshold / peak;
            }
        }

        delay[write_index] = sample;
        const std::int32_t next_index = (write_index + 1) & index_mask;
        const float delayed = detects_per_sample ? delay[next_index] : sample;

        smoothed_gain = smoothed_gain * kSmoothingKeep + target * kSmoothingStep;
        gain = std::min(smoothed_gain, gain * kReleaseKeep + kReleaseStep);

        float limited = gain * delayed;
        if (std::fabs(limited) > threshold) {
            gain = threshold / std::fabs(delayed);
            limited = gain * delayed;
        }
        out[i] = limited;
        write_index = next_index;
    }

    fields.gain = gain;
    fields.smoothed_gain = smoothed_gain;
    fields.write_index = write_index;
    fields.is_limiting = is_limiting ? 1 : 0;
    return has_exceeded;
}

}  // namespace model
