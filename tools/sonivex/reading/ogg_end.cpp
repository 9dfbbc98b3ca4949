#include "ogg_end.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <system_error>

namespace sonivex_tool {
namespace {

// A page (RFC 3533) is a header of 27 bytes, whose last byte counts the segments, a table with the length of
// each of at most 255 segments, and the segments of at most 255 bytes.
constexpr std::string_view kCapture = "OggS";
constexpr size_t kHeaderBytes = 27;
constexpr size_t kLongestPageBytes = kHeaderBytes + 255 + size_t{255} * 255;

size_t byteAt(const std::string& bytes, size_t i) {
    return static_cast<unsigned char>(bytes[i]);
}

// Returns the length of the page at `start`, or more than there is if even its table is incomplete.
size_t pageBytes(const std::string& bytes, size_t start) {
    if (bytes.size() - start < kHeaderBytes) return kLongestPageBytes + 1;
    const size_t segments = byteAt(bytes, start + kHeaderBytes - 1);
    const size_t table = start + kHeaderBytes;
    if (bytes.size() - table < segments) return kLongestPageBytes + 1;
    size_t length = kHeaderBytes + segments;
    for (size_t i = 0; i < segments; ++i) length += byteAt(bytes, table + i);
    return length;
}

}  // namespace

bool endsWithinOggPage(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return false;
    std::ifstream file(path, std::ios::binary);
    std::string start(kCapture.size(), '\0');
    if (!file.read(start.data(), static_cast<std::streamsize>(start.size())) || start != kCapture)
        return false;
    file.seekg(0, std::ios::end);
    const auto size = static_cast<size_t>(std::max<std::streamoff>(file.tellg(), 0));
    // The last page begins within the length of the longest one, whether it is complete or not.
    std::string end(std::min(size, kLongestPageBytes), '\0');
    file.seekg(-static_cast<std::streamoff>(end.size()), std::ios::end);
    if (!file.read(end.data(), static_cast<std::streamsize>(end.size()))) return false;
    const size_t last_page = end.rfind(kCapture);
    if (last_page == std::string::npos) return false;
    return pageBytes(end, last_page) > end.size() - last_page;
}

}  // namespace sonivex_tool
