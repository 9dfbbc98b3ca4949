#include "peak_limiter.h"

#include <algorithm>
#include <cmath>

#include "limiter_gain.h"
#include "pcm.h"
#include "sliding_maximum.h"
#include "steady_gain.h"

namespace sonivex {
namespace {

constexpr std::int32_t kWindowDepth = 6;
constexpr std::int32_t kWindowSamples = 1 << kWindowDepth;
static_assert(kWindowSamples <= kLimiterDelayEntries && 2 * kWindowSamples <= kLimiterTreeEntries);

// The state that changes from sample to sample. It is a copy of the record's fields, because the compiler
// cannot know that `out` does not point into the record.
struct Progress {
    explicit Progress(const PeakLimiterFields& fields)
        : gain(fields.gain),
          smoothed_gain(fields.smoothed_gain),
          write_index(fields.write_index),
          is_limiting(fields.is_limiting != 0) {}

    void storeTo(const PeakLimiterFields& fields) const {
        fields.gain = gain;
        fields.smoothed_gain = smoothed_gain;
        fields.write_index = write_index;
        fields.is_limiting = is_limiting ? 1 : 0;
    }

    float gain;
    float smoothed_gain;
    std::int32_t write_index;
    bool is_limiting;
};

std::int32_t placeAfter(std::int32_t index, int samples, std::int32_t index_mask) {
    return (index + (samples & index_mask)) & index_mask;
}

void engage(const PeakLimiterFields& fields, Progress& progress) {
    if (!progress.is_limiting) std::fill_n(fields.maximum_tree, kLimiterTreeEntries, 0.0F);
    progress.is_limiting = true;
}

// Inserts a level into the window and returns the window's peak. Releases the limiter if that peak is not
// above the threshold.
float insertLevel(const PeakLimiterFields& fields, Progress& progress, float level) {
    const float peak = insertIntoMaximumTree(fields.maximum_tree, progress.write_index, level,
                                             fields.tree_depth, fields.tree_leaves);
    if (fields.threshold >= peak) progress.is_limiting = false;
    return peak;
}

float targetGain(const PeakLimiterFields& fields, const Progress& progress, float peak) {
    return progress.is_limiting ? fields.threshold / peak : fields.idle_gain;
}

float limitSample(Progress& progress, float target, float sample, float threshold) {
    progress.smoothed_gain = smoothTarget(progress.smoothed_gain, target);
    progress.gain = releaseGain(progress.gain, progress.smoothed_gain);
    return applyGain(progress.gain, sample, threshold);
}

bool limitEachByItsOwnLevel(const PeakLimiterFields& fields, const float* in, int count, float* out) {
    const float threshold = fields.threshold;
    float* const delay = fields.delay;
    Progress progress(fields);
    bool has_exceeded = false;

    for (int i = 0; i < count; ++i) {
        // A NaN has no level: if it came out of the tree as the peak, it would make the smoothed gain
        // permanently NaN.
        const float magnitude = std::fabs(in[i]);
        const float level = magnitude >= 0.0F ? magnitude : 0.0F;
        if (level > threshold) {
            engage(fields, progress);
            has_exceeded = true;
        }
        const float peak = progress.is_limiting ? insertLevel(fields, progress, level) : 0.0F;

        delay[progress.write_index] = in[i];
        progress.write_index = placeAfter(progress.write_index, 1, fields.index_mask);
        const float delayed = delay[progress.write_index];
        out[i] = limitSample(progress, targetGain(fields, progress, peak), delayed, threshold);
    }

    progress.storeTo(fields);
    return has_exceeded;
}

// Writes only the samples that the window still holds at the end of the call.
void writeToDelay(const PeakLimiterFields& fields, const float* in, int count) {
    const std::int32_t window = fields.index_mask + 1;
    const int kept = std::min(count, window);
    const float* const newest = in + (count - kept);
    const std::int32_t first = placeAfter(fields.write_index, count - kept, fields.index_mask);
    const int before_end = std::min(kept, window - first);
    std::copy_n(newest, before_end, fields.delay + first);
    std::copy_n(newest + before_end, kept - before_end, fields.delay);
}

// Inserts the level of the last `rest` of a call's `count` samples. The window's peak is already the level of
// this call.
void insertRest(const PeakLimiterFields& fields, const Progress& progress, float level, int count, int rest) {
    if (count >= fields.tree_leaves) {
        // All leaves come from this call, so every node holds its level.
        std::fill_n(fields.maximum_tree, 2 * fields.tree_leaves - 2, level);
        return;
    }
    for (int i = 0; i < rest; ++i) {
        insertIntoMaximumTree(fields.maximum_tree, placeAfter(progress.write_index, i, fields.index_mask),
                              level, fields.tree_depth, fields.tree_leaves);
    }
}

// Treats every sample as if it were as loud as the peak of the call. The target changes only while levels
// from before this call leave the window. After that it is constant, and soon the smoothed gain is too;
// vectors then process the remaining samples.
bool limitAllByTheirPeak(const PeakLimiterFields& fields, const float* in, int count, float* out) {
    // The level is taken before the first write, because `out` may be `in`.
    const float level = largestMagnitude(in, count);
    writeToDelay(fields, in, count);

    const float threshold = fields.threshold;
    const bool has_exceeded = level > threshold;
    Progress progress(fields);
    if (has_exceeded) engage(fields, progress);

    int done = 0;
    float peak = 0.0F;
    bool is_older_forgotten = false;
    while (progress.is_limiting && !is_older_forgotten && done < count) {
        peak = insertLevel(fields, progress, level);
        out[done] = limitSample(progress, targetGain(fields, progress, peak), in[done], threshold);
        progress.write_index = placeAfter(progress.write_index, 1, fields.index_mask);
        is_older_forgotten = peak == level;
        ++done;
    }
    if (progress.is_limiting && is_older_forgotten) insertRest(fields, progress, level, count, count - done);
    progress.write_index = placeAfter(progress.write_index, count - done, fields.index_mask);

    const float target = targetGain(fields, progress, peak);
    while (done < count &&
           !isSameFloat(smoothTarget(progress.smoothed_gain, target), progress.smoothed_gain)) {
        out[done] = limitSample(progress, target, in[done], threshold);
        ++done;
    }
    progress.gain = limitWithSteadyTarget(progress.gain, progress.smoothed_gain, threshold, level, in + done,
                                          count - done, out + done);

    progress.storeTo(fields);
    return has_exceeded;
}

}  // namespace

void resetPeakLimiter(const PeakLimiterFields& fields) {
    fields.idle_gain = 1.0F;
    fields.gain = 1.0F;
    fields.smoothed_gain = 1.0F;
    std::fill_n(fields.delay, kWindowSamples, 0.0F);
    std::fill_n(fields.maximum_tree, 2 * kWindowSamples, 0.0F);
    fields.write_index = 0;
    fields.is_limiting = 0;
    fields.tree_depth = kWindowDepth;
    fields.tree_leaves = kWindowSamples;
    fields.index_mask = kWindowSamples - 1;
}

bool limitPeaks(const PeakLimiterFields& fields, const float* in, int count, float* out) {
    if (count < 1) return false;
    return fields.detects_per_sample != 0 ? limitEachByItsOwnLevel(fields, in, count, out)
                                          : limitAllByTheirPeak(fields, in, count, out);
}

}  // namespace sonivex
