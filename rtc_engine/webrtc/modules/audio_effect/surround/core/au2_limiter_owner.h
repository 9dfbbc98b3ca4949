// An output limiter that frees itself.
#pragma once

#include <memory>
#include <new>

#include "au2_limiter.h"

namespace sonivex {

struct FreeAu2Limiter {
    void operator()(Au2LimiterState* state) const { au2_limiter_free(state); }
};

using Au2LimiterOwner = std::unique_ptr<Au2LimiterState, FreeAu2Limiter>;

/** A limiter at its start, see au2_limiter_reset; never null. Throws std::bad_alloc. */
inline Au2LimiterOwner makeAu2Limiter() {
    Au2LimiterState* state = nullptr;
    au2_limiter_create(&state);
    if (state == nullptr) throw std::bad_alloc();
    au2_limiter_reset(state);
    return Au2LimiterOwner(state);
}

}  // namespace sonivex
