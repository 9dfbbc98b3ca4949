#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace fuzz {

/** A file in memory, with a path under which this process can open it. */
class MemoryFile {
  public:
    MemoryFile(const std::uint8_t* bytes, std::size_t size);
    ~MemoryFile();
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    const std::string& path() const { return path_; }

  private:
    int descriptor_;
    std::string path_;
};

}  // namespace fuzz
