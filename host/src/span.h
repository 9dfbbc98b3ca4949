#pragma once

#include <cstdint>

namespace Vorlin {

/** A part of a stream, in frames that went into the filter since the last flush; without `end` itself. */
struct Span {
    int64_t begin = 0;
    int64_t end = 0;

    int64_t frames() const { return end - begin; }
};

}  // namespace Vorlin
