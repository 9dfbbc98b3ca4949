// Creating what is not supported leaves the half-built handle allocated for ever, on purpose.
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

/** Calls aem_CreateSurround with arguments that it rejects. The handle that stays allocated is the one
 *  exception from what the leak checker is asked to find. */
inline void* createRejected(int channels, int type) {
#if defined(SONIVEX_LEAK_CHECKER)
    const __lsan::ScopedDisabler kept_on_purpose;
#endif
    return aem_CreateSurround(channels, 48000, type, 1, 1);
}

}  // namespace test
