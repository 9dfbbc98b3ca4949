#define _GNU_SOURCE
#include "limited_memory.h"

#include <dlfcn.h>
#include <errno.h>
#include <malloc.h>
#include <stdatomic.h>
#include <stdint.h>
#include <string.h>

// The C library's allocators under their second names.
void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t count, size_t bytes);
void* __libc_realloc(void* memory, size_t bytes);
void* __libc_memalign(size_t alignment, size_t bytes);
void __libc_free(void* memory);

// The other libraries must find these.
#define FOR_LIBRARIES __attribute__((visibility("default")))

static atomic_bool is_counting;
static atomic_long taken_bytes;
static atomic_int requests;
static atomic_int refused;
static Refusal in_force;
static size_t* all_levels;
static int most_levels;
static atomic_int noted;
static atomic_long most_taken_bytes;
static atomic_bool is_exhausted;
static atomic_bool is_pausing;

static bool isLoader(const void* caller) {
    Dl_info info;
    if (dladdr(caller, &info) == 0 || info.dli_fname == NULL) return false;
    return strstr(info.dli_fname, "/ld-linux") != NULL;
}

static bool isRefused(size_t bytes, const void* caller) {
    if (!is_counting || is_pausing) return false;
    const bool is_counted = !isLoader(caller);
    const int number = is_counted ? ++requests : 0;
    const long level = taken_bytes + (long)bytes;
    const int place = level > 0 && all_levels != NULL ? noted++ : most_levels;
    if (place < most_levels) all_levels[place] = (size_t)level;
    if (number > 0 && number == in_force.last) is_exhausted = true;
    const bool is_over = (in_force.limit_bytes > 0 && level > (long)in_force.limit_bytes) ||
                         (is_exhausted && level > most_taken_bytes);
    const bool is_named = number > 0 && (number == in_force.number || number == in_force.last);
    if (!is_over && !is_named) return false;
    ++refused;
    errno = ENOMEM;
    return true;
}

static void take(long bytes) {
    const long taken = taken_bytes += bytes;
    if (taken > most_taken_bytes) most_taken_bytes = taken;
}

static void* counted(void* memory) {
    if (is_counting && memory != NULL) take((long)malloc_usable_size(memory));
    return memory;
}

FOR_LIBRARIES void* malloc(size_t bytes) {
    return isRefused(bytes, __builtin_return_address(0)) ? NULL : counted(__libc_malloc(bytes));
}

FOR_LIBRARIES void* calloc(size_t count, size_t bytes) {
    return isRefused(count * bytes, __builtin_return_address(0)) ? NULL
                                                                 : counted(__libc_calloc(count, bytes));
}

FOR_LIBRARIES void free(void* memory) {
    if (is_counting && memory != NULL) taken_bytes -= (long)malloc_usable_size(memory);
    __libc_free(memory);
}

FOR_LIBRARIES void* realloc(void* memory, size_t bytes) {
    const long before = memory != NULL ? (long)malloc_usable_size(memory) : 0;
    const size_t more = (long)bytes > before ? bytes - (size_t)before : 0;
    if (isRefused(more, __builtin_return_address(0))) return NULL;
    void* const moved = __libc_realloc(memory, bytes);
    if (is_counting && moved != NULL) take((long)malloc_usable_size(moved) - before);
    return moved;
}

FOR_LIBRARIES void* aligned_alloc(size_t alignment, size_t bytes) {
    if (isRefused(bytes, __builtin_return_address(0))) return NULL;
    return counted(__libc_memalign(alignment, bytes));
}

FOR_LIBRARIES int posix_memalign(void** memory, size_t alignment, size_t bytes) {
    if (isRefused(bytes, __builtin_return_address(0))) return ENOMEM;
    void* const fresh = counted(__libc_memalign(alignment, bytes));
    if (fresh == NULL) return ENOMEM;
    *memory = fresh;
    return 0;
}

void limitMemory(const Refusal* refusal, size_t* levels, int count) {
    in_force = *refusal;
    all_levels = levels;
    most_levels = levels != NULL ? count : 0;
    noted = 0;
    taken_bytes = 0;
    most_taken_bytes = 0;
    is_exhausted = false;
    requests = 0;
    refused = 0;
    is_counting = true;
}

void pauseLimit(bool is_paused) {
    is_pausing = is_paused;
}

int refusals(void) {
    return refused;
}

MemoryUse freeMemory(void) {
    is_counting = false;
    const MemoryUse use = {.requests = requests, .refused = refused};
    return use;
}
