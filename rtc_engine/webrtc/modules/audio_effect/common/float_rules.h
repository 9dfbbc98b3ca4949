// What the effects take for granted of float and double, so that they give the same bits everywhere: IEEE
// 754, and every operation rounded to its own type. Included by every file whose arithmetic is part of the
// output.
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
