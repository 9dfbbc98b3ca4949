#include "support/byte_stream.h"

#include <algorithm>
#include <bit>
#include <limits>

namespace fuzz {

std::uint64_t ByteStream::lowestFirst(std::size_t size) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < size; ++i) value |= std::uint64_t{byte()} << (8 * i);
    return value;
}

std::uint8_t ByteStream::byte() {
    if (rest_.empty()) return 0;
    const std::uint8_t first = rest_.front();
    rest_ = rest_.subspan(1);
    return first;
}

std::uint16_t ByteStream::word() {
    return static_cast<std::uint16_t>(lowestFirst(2));
}

std::int32_t ByteStream::number() {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(lowestFirst(4)));
}

std::uint64_t ByteStream::longNumber() {
    return lowestFirst(8);
}

float ByteStream::real() {
    return std::bit_cast<float>(static_cast<std::uint32_t>(lowestFirst(4)));
}

double ByteStream::longReal() {
    return std::bit_cast<double>(lowestFirst(8));
}

int ByteStream::inRange(int lowest, int highest) {
    const auto span = static_cast<std::uint64_t>(std::int64_t{highest} - lowest) + 1;
    const std::size_t size = span <= 0x100 ? 1 : span <= 0x10000 ? 2 : 4;
    return static_cast<int>(lowest + static_cast<std::int64_t>(lowestFirst(size) % span));
}

std::string_view ByteStream::textUntil(char end) {
    const std::string_view text = {reinterpret_cast<const char*>(rest_.data()), rest_.size()};
    const std::size_t length = std::min(text.find(end), text.size());
    rest_ = rest_.subspan(std::min(length + 1, rest_.size()));
    return text.substr(0, length);
}

std::span<const std::uint8_t> ByteStream::bytes(std::size_t size) {
    const auto taken = rest_.first(std::min(size, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return taken;
}

std::string_view ByteStream::restOfText() {
    const auto taken = bytes(rest_.size());
    return {reinterpret_cast<const char*>(taken.data()), taken.size()};
}

void fillWithSamples(std::span<std::int16_t> block, ByteStream& stream) {
    constexpr std::int16_t kLowest = std::numeric_limits<std::int16_t>::min();
    constexpr std::int16_t kHighest = std::numeric_limits<std::int16_t>::max();
    const std::uint8_t kind = stream.byte();
    switch (kind & 7) {
        case 0:
            std::fill(block.begin(), block.end(), std::int16_t{0});
            return;
        case 1:
            std::fill(block.begin(), block.end(), kind & 8 ? kHighest : kLowest);
            return;
        case 2: {
            const std::size_t half_period = 1 + static_cast<std::size_t>(kind >> 3);
            for (std::size_t i = 0; i < block.size(); ++i)
                block[i] = i / half_period % 2 ? kHighest : kLowest;
            return;
        }
        case 3:
        case 4: {
            std::uint32_t state = kind;  // a linear congruential generator; shifted for quieter noise
            for (std::int16_t& sample : block) {
                state = state * 1664525U + 1013904223U;
                const auto loud = static_cast<std::int16_t>(state >> 16);
                sample = static_cast<std::int16_t>(kind & 1 ? loud : loud / 256);
            }
            return;
        }
        case 5: {
            std::fill(block.begin(), block.end(), std::int16_t{0});
            if (!block.empty())
                block[stream.word() % block.size()] = static_cast<std::int16_t>(stream.word());
            return;
        }
        default: {
            std::int16_t period[32] = {};
            const std::size_t length = 1 + static_cast<std::size_t>(kind >> 3);
            for (std::size_t i = 0; i < length; ++i) period[i] = static_cast<std::int16_t>(stream.word());
            for (std::size_t i = 0; i < block.size(); ++i) block[i] = period[i % length];
            return;
        }
    }
}

}  // namespace fuzz
