#pragma once

#include <cstdint>
#include <vector>

#include "output.h"

namespace fuzz {

/** A destination in memory that can be sought, and that is full at a certain size. */
class MemoryOutput : public sonivex_tool::Output {
  public:
    explicit MemoryOutput(std::size_t most_bytes);
    ~MemoryOutput() override;

    void commit() override;

    const std::vector<std::uint8_t>& bytes() const { return bytes_; }

  private:
    int writeAll(const std::uint8_t* data, std::size_t bytes) override;
    static std::int64_t seek(void* output, std::int64_t offset, int whence);
    std::int64_t move(std::int64_t offset, int whence);

    std::size_t most_bytes_;
    std::vector<std::uint8_t> bytes_;
    std::size_t position_ = 0;
};

}  // namespace fuzz
