// Floats that a valid stream never contains and a broken one may.
#pragma once

#include <limits>

namespace test {

inline constexpr float kInfinity = std::numeric_limits<float>::infinity();
inline constexpr float kNotANumber = std::numeric_limits<float>::quiet_NaN();

}  // namespace test
