#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace fuzz {

/** Reads the input of a fuzzer from front to back as numbers, samples and texts. Beyond its end it reads
 *  zeros. It borrows the bytes. */
class ByteStream {
  public:
    ByteStream(const std::uint8_t* bytes, std::size_t size) : rest_(bytes, size) {}

    bool isEmpty() const { return rest_.empty(); }
    std::size_t bytesLeft() const { return rest_.size(); }

    std::uint8_t byte();
    bool flag() { return (byte() & 1) != 0; }
    /** Reads two, four or eight bytes, the lowest first. */
    std::uint16_t word();
    std::int32_t number();
    std::uint64_t longNumber();
    /** Reads four or eight bytes as the bits of a number; they may be NaN or infinite. */
    float real();
    double longReal();
    /** Returns a number from `lowest` to `highest`, read from as few bytes as hold the range. `lowest` must
     *  not be above `highest`. */
    int inRange(int lowest, int highest);
    /** Returns one of the choices, of which there is at least one. */
    template <typename Choice, std::size_t kCount>
    Choice oneOf(const Choice (&choices)[kCount]) {
        return choices[inRange(0, static_cast<int>(kCount) - 1)];
    }
    /** Returns the bytes before the next `end`, which it skips, or all that are left. */
    std::string_view textUntil(char end);
    /** Returns at most `size` bytes. */
    std::span<const std::uint8_t> bytes(std::size_t size);
    /** Returns the bytes that are left. */
    std::string_view restOfText();

  private:
    std::uint64_t lowestFirst(std::size_t size);

    std::span<const std::uint8_t> rest_;
};

/** Fills a block with one of several signals that a single byte of the stream selects: silence, full scale, a
 *  square wave, noise, an impulse, or samples that the stream itself holds and the block repeats. */
void fillWithSamples(std::span<std::int16_t> block, ByteStream& stream);

}  // namespace fuzz
