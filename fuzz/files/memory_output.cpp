#include "memory_output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

namespace fuzz {

MemoryOutput::MemoryOutput(std::size_t most_bytes) : Output("memory"), most_bytes_(most_bytes) {
    openIo(seek);
}

MemoryOutput::~MemoryOutput() {
    closeIo();
}

void MemoryOutput::commit() {
    avio_flush(io());
    throwIfFailed();
}

int MemoryOutput::writeAll(const std::uint8_t* data, std::size_t bytes) {
    if (position_ + bytes > most_bytes_) return remember(ENOSPC);
    bytes_.resize(std::max(bytes_.size(), position_ + bytes));
    std::copy_n(data, bytes, bytes_.begin() + static_cast<std::ptrdiff_t>(position_));
    position_ += bytes;
    return static_cast<int>(bytes);
}

std::int64_t MemoryOutput::seek(void* output, std::int64_t offset, int whence) {
    return static_cast<MemoryOutput*>(static_cast<Output*>(output))->move(offset, whence);
}

std::int64_t MemoryOutput::move(std::int64_t offset, int whence) {
    const auto size = static_cast<std::int64_t>(bytes_.size());
    if (whence == AVSEEK_SIZE) return size;
    if (whence == SEEK_CUR) offset += static_cast<std::int64_t>(position_);
    if (whence == SEEK_END) offset += size;
    if (offset < 0 || offset > static_cast<std::int64_t>(most_bytes_)) return remember(EINVAL);
    position_ = static_cast<std::size_t>(offset);
    return offset;
}

}  // namespace fuzz
