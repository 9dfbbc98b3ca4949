// aem_CreateSurround intentionally leaks the half-built handle when it rejects its arguments.
#pragma once

#include "sonivex/surround.h"

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#include <sanitizer/lsan_interface.h>
#define SONIVEX_LEAK_CHECKER 1
#endif
#elif defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#define SONIVEX_LEAK_CHECKER 1
#endif

namespace test {

/** Calls aem_CreateSurround with arguments that it rejects. The leak checker ignores the handle that stays
 *  allocated. */
inline void* createRejected(int channels, int type) {
#if defined(SONIVEX_LEAK_CHECKER)
    const __lsan::ScopedDisabler kept_on_purpose;
#endif
    return aem_CreateSurround(channels, 48000, type, 1, 1);
}

}  // namespace test
