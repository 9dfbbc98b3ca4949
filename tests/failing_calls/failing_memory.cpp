#include "failing_calls/failing_memory.h"

#include <dlfcn.h>
#include <libavutil/version.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <new>

struct AVTXContext;
struct SwrContext;

extern "C" {
// A sanitizer's own allocators: it can free only memory that it allocated itself. Null without a sanitizer.
__attribute__((weak)) void* __interceptor_malloc(size_t bytes);
__attribute__((weak)) void* __interceptor_calloc(size_t count, size_t bytes);
__attribute__((weak)) void* __interceptor_realloc(void* memory, size_t bytes);
__attribute__((weak)) void* __interceptor_aligned_alloc(size_t alignment, size_t bytes);
__attribute__((weak)) int __interceptor_posix_memalign(void** memory, size_t alignment, size_t bytes);
__attribute__((weak)) void __interceptor_free(void* memory);

// The C library's allocators under their second names.
void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t count, size_t bytes);
void* __libc_realloc(void* memory, size_t bytes);
void* __libc_memalign(size_t alignment, size_t bytes);
void __libc_free(void* memory);
}

// The type of libavutil's av_tx_fn.
using TransformRun = void (*)(AVTXContext* context, void* out, void* in, ptrdiff_t stride);

// The build hides symbols by default, but other libraries must find these.
#define FOR_LIBRARIES __attribute__((visibility("default")))

namespace {

using Which = test::FailingMemory::Which;

thread_local bool is_counting = false;
thread_local bool is_inside_swr_init = false;

// Only a thread that is counting uses these, and no two threads count at the same time.
bool counts_inside_swr_init = false;
bool counts_only_libavutil = false;
int first_to_fail = 0;
Which which_fail = Which::kOne;
int requests_so_far = 0;
bool has_one_failed = false;
int living = 0;

// The allocators that C++ uses, and those that only libavutil uses.
enum class User { kAny, kLibavutil };

bool isRefused(User user) {
    if (!is_counting || is_inside_swr_init != counts_inside_swr_init) return false;
    if (counts_only_libavutil && user != User::kLibavutil) return false;
    ++requests_so_far;
    const bool is_refused =
        first_to_fail > 0 && (requests_so_far == first_to_fail ||
                              (which_fail == Which::kAllFromThere && requests_so_far > first_to_fail));
    if (is_refused) {
        has_one_failed = true;
        errno = ENOMEM;
    }
    return is_refused;
}

void* counted(void* memory) {
    if (is_counting && memory != nullptr) ++living;
    return memory;
}

}  // namespace

extern "C" {

FOR_LIBRARIES void* malloc(size_t bytes) noexcept {
    if (isRefused(User::kAny)) return nullptr;
    return counted(__interceptor_malloc != nullptr ? __interceptor_malloc(bytes) : __libc_malloc(bytes));
}

FOR_LIBRARIES void* calloc(size_t count, size_t bytes) noexcept {
    if (isRefused(User::kAny)) return nullptr;
    return counted(__interceptor_calloc != nullptr ? __interceptor_calloc(count, bytes)
                                                   : __libc_calloc(count, bytes));
}

FOR_LIBRARIES void* realloc(void* memory, size_t bytes) noexcept {
    if (isRefused(User::kLibavutil)) return nullptr;
    void* const moved = __interceptor_realloc != nullptr ? __interceptor_realloc(memory, bytes)
                                                         : __libc_realloc(memory, bytes);
    return memory == nullptr ? counted(moved) : moved;
}

FOR_LIBRARIES void* aligned_alloc(size_t alignment, size_t bytes) noexcept {
    if (isRefused(User::kAny)) return nullptr;
    return counted(__interceptor_aligned_alloc != nullptr ? __interceptor_aligned_alloc(alignment, bytes)
                                                          : __libc_memalign(alignment, bytes));
}

FOR_LIBRARIES int posix_memalign(void** memory, size_t alignment, size_t bytes) noexcept {
    if (isRefused(User::kLibavutil)) return ENOMEM;
    void* fresh = nullptr;
    if (__interceptor_posix_memalign == nullptr) {
        fresh = __libc_memalign(alignment, bytes);
    } else if (__interceptor_posix_memalign(&fresh, alignment, bytes) != 0) {
        return ENOMEM;
    }
    if (fresh == nullptr) return ENOMEM;
    *memory = counted(fresh);
    return 0;
}

FOR_LIBRARIES void free(void* memory) noexcept {
    if (is_counting && memory != nullptr) --living;
    if (__interceptor_free != nullptr) {
        __interceptor_free(memory);
    } else {
        __libc_free(memory);
    }
}

FOR_LIBRARIES int swr_init(SwrContext* resampler) {
    static const auto real = reinterpret_cast<int (*)(SwrContext*)>(dlsym(RTLD_NEXT, "swr_init"));
    is_inside_swr_init = true;
    const int result = real(resampler);
    is_inside_swr_init = false;
    return result;
}

// Since FFmpeg 7, this function keeps a block if its last request fails. Its caller got nothing that it could
// free.
FOR_LIBRARIES int av_tx_init(AVTXContext** context, TransformRun* run, int type, int is_inverse, int points,
                             const void* scale, uint64_t flags) {
    static const auto real = reinterpret_cast<decltype(&av_tx_init)>(dlsym(RTLD_NEXT, "av_tx_init"));
    const int before = living;
    const int result = real(context, run, type, is_inverse, points, scale, flags);
    constexpr bool kKeepsABlock = LIBAVUTIL_VERSION_MAJOR >= 59;
    if (kKeepsABlock && is_counting && result < 0 && living == before + 1) living = before;
    return result;
}

// The libraries themselves leak when memory runs out: libavfilter leaks the name of a filter that it could
// not create, libswresample a buffer that it could not enlarge, and cairo, whose own functions have no names
// here, a part of the SVG surface that makeSurface wants. The suppressions match whole stacks, which the leak
// checker records only without fast unwinding.
FOR_LIBRARIES const char* __asan_default_options() {
    return "fast_unwind_on_malloc=0";
}
FOR_LIBRARIES const char* __lsan_default_suppressions() {
    return "leak:av_strdup\nleak:swr_convert\nleak:makeSurface";
}

}  // extern "C"

#undef FOR_LIBRARIES

// The operators of the C++ library call malloc anyway, but those of a sanitizer do not.
namespace {

void* memoryOrThrow(std::size_t bytes) {
    void* const memory = malloc(bytes > 0 ? bytes : 1);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void* alignedOrThrow(std::size_t bytes, std::align_val_t alignment) {
    void* memory = nullptr;
    if (posix_memalign(&memory, static_cast<std::size_t>(alignment), bytes > 0 ? bytes : 1) != 0)
        throw std::bad_alloc();
    return memory;
}

}  // namespace

void* operator new(std::size_t bytes) {
    return memoryOrThrow(bytes);
}
void* operator new[](std::size_t bytes) {
    return memoryOrThrow(bytes);
}
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return malloc(bytes > 0 ? bytes : 1);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return malloc(bytes > 0 ? bytes : 1);
}
void* operator new(std::size_t bytes, std::align_val_t alignment) {
    return alignedOrThrow(bytes, alignment);
}
void* operator new[](std::size_t bytes, std::align_val_t alignment) {
    return alignedOrThrow(bytes, alignment);
}
void* operator new(std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept {
    void* memory = nullptr;
    return posix_memalign(&memory, static_cast<std::size_t>(alignment), bytes > 0 ? bytes : 1) == 0 ? memory
                                                                                                    : nullptr;
}
void operator delete(void* memory) noexcept {
    free(memory);
}
void operator delete[](void* memory) noexcept {
    free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
    free(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
    free(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
    free(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    free(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
    free(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    free(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    free(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
    free(memory);
}
void operator delete(void* memory, std::align_val_t, const std::nothrow_t&) noexcept {
    free(memory);
}

namespace test {

FailingMemory::FailingMemory(int first, Which which) {
    first_to_fail = first;
    which_fail = which;
    requests_so_far = 0;
    has_one_failed = false;
    living = 0;
    counts_inside_swr_init = false;
    counts_only_libavutil = false;
}

FailingMemory::~FailingMemory() {
    is_counting = false;
    counts_inside_swr_init = false;
}

FailingMemory::Counting::Counting() {
    is_counting = true;
}

FailingMemory::Counting::~Counting() {
    is_counting = false;
}

void FailingMemory::onlyOfLibavutil() {
    counts_only_libavutil = true;
}

void FailingMemory::onlyInsideSwrInit() {
    counts_inside_swr_init = true;
}

int FailingMemory::requests() const {
    return requests_so_far;
}

FailingMemory::Which FailingMemory::which() const {
    return which_fail;
}

bool FailingMemory::hasFailed() const {
    return has_one_failed;
}

int FailingMemory::alive() const {
    return living;
}

}  // namespace test
