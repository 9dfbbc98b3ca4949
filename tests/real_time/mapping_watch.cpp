#include "mapping_watch.h"

#include <sys/mman.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <bit>
#include <cerrno>

namespace {

static_assert(sizeof(off_t) == sizeof(long), "SYS_mmap takes the offset in bytes only where off_t is a long");

bool is_watching_mappings = false;
bool refuses = false;
int mapping_calls = 0;
std::ptrdiff_t mapped_bytes = 0;

std::ptrdiff_t inWholePages(std::size_t bytes) {
    const auto page_bytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
    return static_cast<std::ptrdiff_t>((bytes + page_bytes - 1) / page_bytes * page_bytes);
}

}  // namespace

extern "C" void* mmap(void* address, std::size_t bytes, int protection, int flags, int file,
                      off_t offset) noexcept {
    if (is_watching_mappings) {
        ++mapping_calls;
        if (refuses) {
            errno = ENOMEM;
            return MAP_FAILED;
        }
    }
    const long result = syscall(SYS_mmap, address, bytes, protection, flags, file, offset);
    if (result == -1) return MAP_FAILED;
    if (is_watching_mappings) mapped_bytes += inWholePages(bytes);
    return std::bit_cast<void*>(result);
}

extern "C" int munmap(void* address, std::size_t bytes) noexcept {
    const long result = syscall(SYS_munmap, address, bytes);
    if (is_watching_mappings) {
        ++mapping_calls;
        if (result == 0) mapped_bytes -= inWholePages(bytes);
    }
    return static_cast<int>(result);
}

namespace test {

MappingWatch::MappingWatch(Kernel kernel) {
    refuses = kernel == Kernel::kRefuses;
    mapping_calls = 0;
    mapped_bytes = 0;
    is_watching_mappings = true;
}

MappingWatch::~MappingWatch() {
    is_watching_mappings = false;
}

int MappingWatch::calls() const {
    return mapping_calls;
}

std::ptrdiff_t MappingWatch::bytes() const {
    return mapped_bytes;
}

}  // namespace test
