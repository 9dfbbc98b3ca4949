#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace sonivex_tool {

// How late one recording of a sound is against another, whatever was done to levels and spectrum between:
//
//   X, Y:  spectra of a channel before and after, faded in and out
//   C[k] = sum over channels of conj(X[k]) Y[k] / (|X[k]| |Y[k]| + floor)
//   c[n] = inverse transform of C;  the delay is the n of the greatest |c[n]|
//
// Only phases count (generalised cross-correlation with phase transform), so a filter between the two does
// not smear the peak as it does that of the plain correlation. A tone fits at every period, so a peak counts
// only when none elsewhere comes near it. The fades keep the instant at which both recordings are cut, which
// they share whatever the delay is, out of the spectra; the floor keeps bins that hold no more than rounding
// noise from having a say.

/** A channel before and after; equally many samples. */
struct ChannelPair {
    std::span<const float> before;
    std::span<const float> after;
};

/** Find by how many samples `after` is late; negative when it is early.
 *  @param longest the delay looked for goes from -longest to longest; below the number of samples.
 *  @return nothing when no delay stands out: silence, steady tones, or sounds that have nothing in common.
 *  @throw std::bad_alloc */
std::optional<int64_t> findDelay(const std::vector<ChannelPair>& pairs, int longest);

}  // namespace sonivex_tool
