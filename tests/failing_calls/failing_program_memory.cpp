// A library for LD_PRELOAD that makes requests for memory fail in a program that knows nothing of it, from
// the beginning of main() on. The environment says what fails:
//
//   SONIVEX_FAIL_FIRST   number of the first request that fails, counted from 1; 0: none
//   SONIVEX_FAIL_MANNER  once, or always: all requests from the first on
//   SONIVEX_FAIL_WHOSE   c++: only those of C++; all: those of the C libraries, too
//   SONIVEX_FAIL_MARK    a file to create when a request has failed
//   SONIVEX_FAIL_COUNT   a file that gets the number of requests when the program ends
#include <dlfcn.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#define FOR_PROGRAMS __attribute__((visibility("default")))

struct SwrContext;

// The C library's allocators under their second names.
extern "C" {
void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t count, size_t bytes);
void* __libc_realloc(void* memory, size_t bytes);
void* __libc_memalign(size_t alignment, size_t bytes);
void __libc_free(void* memory);
}

namespace {

using Main = int (*)(int, char**, char**);

Main program_main = nullptr;
std::atomic<bool> is_counting{false};
bool counts_all = false;
bool fails_always = false;
long first_to_fail = 0;
const char* mark_path = "";
const char* count_path = "";
std::atomic<long> requests{0};
thread_local bool is_inside_swr_init = false;

const char* setting(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

int create(const char* path) {
    return open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
}

bool isRefused() {
    if (!is_counting || is_inside_swr_init) return false;
    const long number = ++requests;
    if (first_to_fail == 0 || number < first_to_fail || (number > first_to_fail && !fails_always))
        return false;
    if (number == first_to_fail) {
        const int mark = create(mark_path);
        if (mark >= 0) close(mark);
    }
    errno = ENOMEM;
    return true;
}

bool isRefusedToC() {
    return counts_all && isRefused();
}

// The loader and the libraries' constructors run before main(), and the program cannot answer for them.
int countedMain(int argc, char** argv, char** environment) {
    counts_all = std::strcmp(setting("SONIVEX_FAIL_WHOSE"), "all") == 0;
    fails_always = std::strcmp(setting("SONIVEX_FAIL_MANNER"), "always") == 0;
    first_to_fail = std::strtol(setting("SONIVEX_FAIL_FIRST"), nullptr, 10);
    mark_path = setting("SONIVEX_FAIL_MARK");
    count_path = setting("SONIVEX_FAIL_COUNT");
    is_counting = true;
    const int result = program_main(argc, argv, environment);
    is_counting = false;
    char text[32];
    const int length = std::snprintf(text, sizeof text, "%ld\n", requests.load());
    const int file = create(count_path);
    if (file >= 0) {
        (void)!write(file, text, static_cast<size_t>(length));
        close(file);
    }
    return result;
}

void* memoryOrThrow(std::size_t alignment, std::size_t bytes) {
    void* const memory = isRefused() ? nullptr : __libc_memalign(alignment, bytes > 0 ? bytes : 1);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void* memoryOrNull(std::size_t alignment, std::size_t bytes) {
    return isRefused() ? nullptr : __libc_memalign(alignment, bytes > 0 ? bytes : 1);
}

}  // namespace

extern "C" {

FOR_PROGRAMS int __libc_start_main(Main main, int argc, char** argv, void (*start)(), void (*end)(),
                                   void (*end_of_loader)(), void* stack_end) {
    using Start = int (*)(Main, int, char**, void (*)(), void (*)(), void (*)(), void*);
    program_main = main;
    const auto real = reinterpret_cast<Start>(dlsym(RTLD_NEXT, "__libc_start_main"));
    return real(countedMain, argc, argv, start, end, end_of_loader, stack_end);
}

// libswresample 5.1 does not check there whether it got its converter, and divides by zero at the first
// sample (docs/known-limits.md).
FOR_PROGRAMS int swr_init(SwrContext* resampler) {
    static const auto real = reinterpret_cast<int (*)(SwrContext*)>(dlsym(RTLD_NEXT, "swr_init"));
    is_inside_swr_init = true;
    const int result = real(resampler);
    is_inside_swr_init = false;
    return result;
}

FOR_PROGRAMS void* malloc(size_t bytes) noexcept {
    return isRefusedToC() ? nullptr : __libc_malloc(bytes);
}

FOR_PROGRAMS void* calloc(size_t count, size_t bytes) noexcept {
    return isRefusedToC() ? nullptr : __libc_calloc(count, bytes);
}

FOR_PROGRAMS void* realloc(void* memory, size_t bytes) noexcept {
    return isRefusedToC() ? nullptr : __libc_realloc(memory, bytes);
}

FOR_PROGRAMS void* aligned_alloc(size_t alignment, size_t bytes) noexcept {
    return isRefusedToC() ? nullptr : __libc_memalign(alignment, bytes);
}

FOR_PROGRAMS int posix_memalign(void** memory, size_t alignment, size_t bytes) noexcept {
    void* const fresh = isRefusedToC() ? nullptr : __libc_memalign(alignment, bytes);
    if (fresh == nullptr) return ENOMEM;
    *memory = fresh;
    return 0;
}

FOR_PROGRAMS void free(void* memory) noexcept {
    __libc_free(memory);
}

}  // extern "C"

namespace {
constexpr std::size_t kUsual = alignof(std::max_align_t);
}  // namespace

FOR_PROGRAMS void* operator new(std::size_t bytes) {
    return memoryOrThrow(kUsual, bytes);
}
FOR_PROGRAMS void* operator new[](std::size_t bytes) {
    return memoryOrThrow(kUsual, bytes);
}
FOR_PROGRAMS void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return memoryOrNull(kUsual, bytes);
}
FOR_PROGRAMS void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return memoryOrNull(kUsual, bytes);
}
FOR_PROGRAMS void* operator new(std::size_t bytes, std::align_val_t alignment) {
    return memoryOrThrow(static_cast<std::size_t>(alignment), bytes);
}
FOR_PROGRAMS void* operator new(std::size_t bytes, std::align_val_t alignment,
                                const std::nothrow_t&) noexcept {
    return memoryOrNull(static_cast<std::size_t>(alignment), bytes);
}
FOR_PROGRAMS void operator delete(void* memory) noexcept {
    free(memory);
}
FOR_PROGRAMS void operator delete[](void* memory) noexcept {
    free(memory);
}
FOR_PROGRAMS void operator delete(void* memory, std::size_t) noexcept {
    free(memory);
}
FOR_PROGRAMS void operator delete[](void* memory, std::size_t) noexcept {
    free(memory);
}
FOR_PROGRAMS void operator delete(void* memory, std::align_val_t) noexcept {
    free(memory);
}
FOR_PROGRAMS void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
    free(memory);
}
