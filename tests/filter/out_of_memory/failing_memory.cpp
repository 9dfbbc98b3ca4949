// Replaces the two functions through which libavutil gets all of its memory. C++ allocations do not use them.
#include "failing_memory.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstdlib>

struct SwrContext;

extern "C" {
// A sanitizer's own allocators: it can free only memory that it allocated itself. Null without a sanitizer.
__attribute__((weak)) int __interceptor_posix_memalign(void** memory, size_t alignment, size_t bytes);
__attribute__((weak)) void* __interceptor_realloc(void* memory, size_t bytes);
}

// The build hides symbols by default, but the FFmpeg libraries must find these.
#define FOR_LIBRARIES __attribute__((visibility("default")))

namespace {

using Which = test::FailingMemory::Which;

thread_local bool is_counting = false;
thread_local bool is_inside_swr_init = false;
thread_local int first_to_fail = 0;
thread_local Which which_fail = Which::kOne;
thread_local int requests_so_far = 0;

bool isRefused() {
    if (!is_counting || is_inside_swr_init) return false;
    ++requests_so_far;
    return requests_so_far == first_to_fail ||
           (which_fail == Which::kAllFromThere && requests_so_far > first_to_fail);
}

template <typename Function>
Function nextOf(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

FOR_LIBRARIES int posix_memalign(void** memory, size_t alignment, size_t bytes) noexcept {
    using Function = int (*)(void**, size_t, size_t);
    if (isRefused()) return ENOMEM;
    static const Function real = __interceptor_posix_memalign != nullptr ? &__interceptor_posix_memalign
                                                                         : nextOf<Function>("posix_memalign");
    return real(memory, alignment, bytes);
}

FOR_LIBRARIES void* realloc(void* memory, size_t bytes) noexcept {
    using Function = void* (*)(void*, size_t);
    if (isRefused()) {
        errno = ENOMEM;
        return nullptr;
    }
    static const Function real =
        __interceptor_realloc != nullptr ? &__interceptor_realloc : nextOf<Function>("realloc");
    return real(memory, bytes);
}

FOR_LIBRARIES int swr_init(SwrContext* resampler) {
    static const auto real = nextOf<int (*)(SwrContext*)>("swr_init");
    is_inside_swr_init = true;
    const int result = real(resampler);
    is_inside_swr_init = false;
    return result;
}

// The libraries themselves leak when memory runs out: libavfilter leaks the name of a filter that it could
// not create, libswresample a buffer that it could not enlarge. The suppressions match whole stacks, which
// the leak checker records only without fast unwinding.
FOR_LIBRARIES const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}
FOR_LIBRARIES const char* __lsan_default_suppressions() {
    return "leak:av_strdup\nleak:swr_convert";
}

}  // extern "C"

#undef FOR_LIBRARIES

namespace test {

FailingMemory::FailingMemory(int first, Which which) {
    first_to_fail = first;
    which_fail = which;
    requests_so_far = 0;
    is_counting = true;
}

FailingMemory::~FailingMemory() {
    is_counting = false;
}

int FailingMemory::requests() const {
    return requests_so_far;
}

}  // namespace test
