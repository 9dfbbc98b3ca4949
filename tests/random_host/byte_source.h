// The bytes from which a random host decides what to do next.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "support/signals/signals.h"

namespace test {

/** Gives bytes, and numbers made of them. A source that is over gives zeros.
 *
 *  Two arguments of one call must not both read from a source: compilers evaluate them in different orders,
 *  and the same seed would make different hosts. */
class ByteSource {
  public:
    ByteSource() = default;
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;
    virtual ~ByteSource() = default;

    virtual bool isOver() const = 0;
    virtual std::uint8_t byte() = 0;

    std::uint32_t word() {
        std::uint32_t bits = 0;
        for (int i = 0; i < 4; ++i) bits = bits << 8U | byte();
        return bits;
    }
    /** Returns a number in 0..count-1, which takes one byte up to a count of 256 and four bytes above. */
    std::uint32_t below(std::uint32_t count) { return (count <= 256 ? byte() : word()) % count; }
    bool oneIn(std::uint32_t count) { return below(count) == count - 1; }
    template <typename T, std::size_t N>
    T of(const T (&choices)[N]) {
        return choices[below(N)];
    }
    /** Returns up to `longest` bytes as they are. */
    std::string text(std::uint32_t longest) {
        std::string text(below(longest + 1), '\0');
        for (char& each : text) each = static_cast<char>(byte());
        return text;
    }
};

/** Gives the bytes of a fuzzer's input. */
class GivenBytes final : public ByteSource {
  public:
    explicit GivenBytes(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}
    bool isOver() const override { return bytes_.empty(); }
    std::uint8_t byte() override {
        if (bytes_.empty()) return 0;
        const std::uint8_t first = bytes_.front();
        bytes_ = bytes_.subspan(1);
        return first;
    }

  private:
    std::span<const std::uint8_t> bytes_;
};

/** Gives pseudo-random bytes without end, the same for the same seed. */
class SeededBytes final : public ByteSource {
  public:
    explicit SeededBytes(std::uint64_t seed) : random_(seed) {}
    bool isOver() const override { return false; }
    std::uint8_t byte() override {
        if (left_ == 0) {
            bits_ = random_.bits();
            left_ = sizeof(bits_);
        }
        const auto lowest = static_cast<std::uint8_t>(bits_ & 0xFFU);
        bits_ >>= 8U;
        --left_;
        return lowest;
    }

  private:
    Random random_;
    std::uint64_t bits_ = 0;
    std::size_t left_ = 0;
};

}  // namespace test
