#include "support/memory_file.h"

#include <sys/mman.h>
#include <unistd.h>

#include "support/promise.h"

namespace fuzz {

MemoryFile::MemoryFile(const std::uint8_t* bytes, std::size_t size)
    : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) {
    require(descriptor_ >= 0, "the system gives a file in memory");
    require(write(descriptor_, bytes, size) == static_cast<ssize_t>(size),
            "a file in memory takes all bytes");
    path_ = "/proc/self/fd/" + std::to_string(descriptor_);
}

MemoryFile::~MemoryFile() {
    close(descriptor_);
}

}  // namespace fuzz
