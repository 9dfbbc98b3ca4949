// An owner that frees its output limiter.
//
// Use: const sonivex::Au2LimiterOwner limiter = sonivex::makeAu2Limiter();
#pragma once

#include <memory>
#include <new>

#include "au2_limiter.h"

namespace sonivex {

/** The deleter of Au2LimiterOwner. */
struct FreeAu2Limiter {
    /** Frees the state. [any] not real-time safe */
    void operator()(Au2LimiterState* state) const { au2_limiter_free(state); }
};

/** Owns a limiter and frees it. */
using Au2LimiterOwner = std::unique_ptr<Au2LimiterState, FreeAu2Limiter>;

/** Makes a limiter in the state that au2_limiter_reset leaves; never null.
 *  Throws std::bad_alloc when memory runs out. [any, concurrent] not real-time safe: allocates */
inline Au2LimiterOwner makeAu2Limiter() {
    Au2LimiterState* state = nullptr;
    au2_limiter_create(&state);
    if (state == nullptr) throw std::bad_alloc();
    au2_limiter_reset(state);
    return Au2LimiterOwner(state);
}

}  // namespace sonivex
