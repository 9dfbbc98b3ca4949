#pragma once

#include <cstdint>

namespace test {

// The first sample of a call of the steered filter tells what becomes of the call. After any other sample the
// filter sets every sample of the call to the number of calls that it has taken since it was made or flushed,
// from 1. It works on 16 bits and has no delay.

/** The filter gives the call up, as when memory runs out. */
inline constexpr int16_t kDropCall = -1000;
/** The load guard finds the filter too slow after this call. */
inline constexpr int16_t kOverload = -2000;
/** The dump of the call lacks its last bytes, as on a full disk. */
inline constexpr int16_t kShortDump = -3000;
/** The filter has no memory for the call and says so, instead of giving the call up. */
inline constexpr int16_t kNoMemory = -4000;

inline constexpr int kMissingInput_bytes = 100;
inline constexpr int kMissingOutput_bytes = 300;

// The rate of the stream tells whether the filter begins.

/** The filter cannot begin. */
inline constexpr int kNoFilterRate_hz = 8000;
/** The filter begins, but refuses its options. */
inline constexpr int kNoOptionsRate_hz = 16000;
/** The filter does not begin while another one at this rate lives. */
inline constexpr int kOneFilterRate_hz = 44100;

}  // namespace test
