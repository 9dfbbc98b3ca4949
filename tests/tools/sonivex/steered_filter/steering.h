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

inline constexpr int kMissingInput_bytes = 100;
inline constexpr int kMissingOutput_bytes = 300;

}  // namespace test
