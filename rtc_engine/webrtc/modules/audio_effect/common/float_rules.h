// Checks at compile time what the effects assume about float and double to give the same bits on every
// machine: IEEE 754 formats, and every operation rounded to its own type. Every file whose arithmetic affects
// the output includes this header.
#pragma once

#include <cfloat>
#include <limits>

static_assert(FLT_EVAL_METHOD == 0,
              "an intermediate result with more precision than its type changes the output");
static_assert(std::numeric_limits<float>::is_iec559 && std::numeric_limits<float>::digits == 24);
static_assert(std::numeric_limits<double>::is_iec559 && std::numeric_limits<double>::digits == 53);

#if defined(__FAST_MATH__)
#error "the effects must not be built with -ffast-math"
#endif
