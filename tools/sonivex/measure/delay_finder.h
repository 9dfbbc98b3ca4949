#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace sonivex_tool {

// Finds the delay between two recordings of one sound, even if levels and spectrum changed in between:
//
//   X, Y:  spectra of a channel before and after, faded in and out
//   C[k] = sum over channels of conj(X[k]) Y[k] / (|X[k]| |Y[k]| + floor)
//   c[n] = inverse transform of C;  the delay is the n of the greatest |c[n]|
//
// This is the generalised cross-correlation with phase transform: only phases count, so a filter between the
// two recordings does not smear the peak as it smears that of the plain correlation.
//
// - A tone matches at every period. A peak therefore counts only if no other peak comes near its height.
// - Both recordings are cut at the same instants, whatever the delay. The fades keep these cuts out of the
//   spectra.
// - The floor silences bins that hold nothing but rounding noise.

/** A channel before and after; both have the same number of samples. */
struct ChannelPair {
    std::span<const float> before;
    std::span<const float> after;
};

/** Finds by how many samples `after` lags `before`; negative if it leads.
 *  @param pairs the channels, all of the same length
 *  @param longest the search covers -longest to longest; less than the number of samples
 *  @return nothing if no delay stands out: silence, steady tones, or unrelated sounds
 *  @throw std::bad_alloc */
std::optional<int64_t> findDelay(const std::vector<ChannelPair>& pairs, int longest);

}  // namespace sonivex_tool
