#include "base64.h"

#include <cstdint>

namespace sonivex_plotting {

std::string base64(std::string_view bytes) {
    constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    constexpr std::size_t kGroup_bytes = 3;
    constexpr unsigned kBitsOfDigit = 6;
    std::string text;
    text.reserve((bytes.size() + 2) / kGroup_bytes * 4);
    for (std::size_t first = 0; first < bytes.size(); first += kGroup_bytes) {
        const std::string_view part = bytes.substr(first, kGroup_bytes);
        std::uint32_t group = 0;
        for (const char byte : part) group = group << 8U | static_cast<unsigned char>(byte);
        group <<= 8U * (kGroup_bytes - part.size());
        for (unsigned digit = 0; digit < 4; ++digit) {
            const std::uint32_t value = group >> kBitsOfDigit * (3 - digit) & 63U;
            text += digit <= part.size() ? kDigits[value] : '=';
        }
    }
    return text;
}

}  // namespace sonivex_plotting
