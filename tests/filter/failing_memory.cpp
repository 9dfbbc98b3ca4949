// Stands before the two functions through which libavutil gets all of its memory. What C++ allocates does not
// come by here.
#include "failing_memory.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstdlib>

struct SwrContext;

extern "C" {
// The sanitizers' own, since what they free they must have given; null in a build without one.
__attribute__((weak)) int __interceptor_posix_memalign(void** memory, size_t alignment, size_t bytes);
__attribute__((weak)) void* __interceptor_realloc(void* memory, size_t bytes);
}

// Sources are compiled with hidden symbols, and the libraries have to find these.
#define FOR_LIBRARIES __attribute__((visibility("default")))

namespace {

using Which = test::FailingMemory::Which;

thread_local bool isCounting = false;
thread_local bool isInsideSwrInit = false;
thread_local int firstToFail = 0;
thread_local Which whichFail = Which::One;
thread_local int requestsSoFar = 0;

bool isRefused() {
    if (!isCounting || isInsideSwrInit) return false;
    ++requestsSoFar;
    return requestsSoFar == firstToFail || (whichFail == Which::AllFromThere && requestsSoFar > firstToFail);
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
    isInsideSwrInit = true;
    const int result = real(resampler);
    isInsideSwrInit = false;
    return result;
}

// The libraries themselves forget memory when they run short: libavfilter the name of a filter that it could
// not make, libswresample a buffer that it could not enlarge. Told by whole stacks, which the leak checker
// keeps only if asked.
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
    firstToFail = first;
    whichFail = which;
    requestsSoFar = 0;
    isCounting = true;
}

FailingMemory::~FailingMemory() {
    isCounting = false;
}

int FailingMemory::requests() const {
    return requestsSoFar;
}

}  // namespace test
