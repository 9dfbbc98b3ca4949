#include "png_title.h"

#include <cstddef>
#include <cstdint>

namespace sonivex_plotting {
namespace {

// The signature of 8 bytes, and the header: length, type, 13 bytes and check sum.
constexpr std::size_t kAfterHeader = 8 + 4 + 4 + 13 + 4;
constexpr std::uint32_t kReversedPolynomial = 0xEDB88320U;  // CRC-32 of ISO 3309

std::uint32_t checkSum(const std::string& bytes) {
    std::uint32_t sum = 0xFFFFFFFFU;
    for (const char byte : bytes) {
        sum ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit) sum = sum >> 1U ^ ((sum & 1U) != 0 ? kReversedPolynomial : 0U);
    }
    return ~sum;
}

std::string bigEndian(std::uint32_t value) {
    std::string bytes;
    for (unsigned shift = 32; shift > 0; shift -= 8) bytes += static_cast<char>(value >> (shift - 8) & 0xFFU);
    return bytes;
}

}  // namespace

std::string withPngTitle(const std::string& png, const std::string& title) {
    const std::string data = std::string("Title") + '\0' + title;
    const std::string chunk = "tEXt" + data;
    return png.substr(0, kAfterHeader) + bigEndian(static_cast<std::uint32_t>(data.size())) + chunk +
           bigEndian(checkSum(chunk)) + png.substr(kAfterHeader);
}

}  // namespace sonivex_plotting
