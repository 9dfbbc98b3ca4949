#include "wav_end.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string_view>
#include <system_error>

namespace sonivex_tool {
namespace {

constexpr int kMostChunks = 1000;  // before the audio; files have a few

// A chunk begins with its name and the length of what follows, 4 bytes each, the lowest byte first.
struct ChunkHeader {
    std::array<char, 4> name{};
    std::array<unsigned char, 4> length{};

    bool isNamed(std::string_view wanted) const { return std::string_view(name.data(), 4) == wanted; }
    uint32_t bytes() const {
        return length[0] | uint32_t{length[1]} << 8U | uint32_t{length[2]} << 16U |
               uint32_t{length[3]} << 24U;
    }
};
static_assert(sizeof(ChunkHeader) == 8);

// Writers that cannot go back to enter the length leave 0, or one next to 2^31 or 2^32 bytes.
bool isPlaceholder(uint32_t bytes) {
    return bytes == 0 || (bytes >= 0x7FFF0000 && bytes <= 0x8000FFFF) || bytes >= 0xFFFF0000;
}

bool read(std::istream& file, ChunkHeader& header) {
    return static_cast<bool>(file.read(reinterpret_cast<char*>(&header), sizeof header));
}

// Returns the length in the header of the chunk with the audio.
std::optional<uint32_t> audioBytes(std::istream& file) {
    ChunkHeader chunk;
    std::array<char, 4> form{};
    if (!read(file, chunk) || !chunk.isNamed("RIFF")) return std::nullopt;
    if (!file.read(form.data(), form.size()) || std::string_view(form.data(), form.size()) != "WAVE")
        return std::nullopt;
    for (int i = 0; i < kMostChunks && read(file, chunk); ++i) {
        const uint32_t bytes = chunk.bytes();
        if (chunk.isNamed("data")) return bytes;
        file.seekg(static_cast<std::streamoff>(bytes) + bytes % 2, std::ios::cur);
    }
    return std::nullopt;
}

}  // namespace

std::optional<int64_t> statedWavBytes(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) return std::nullopt;
    std::ifstream file(path, std::ios::binary);
    const std::optional<uint32_t> bytes = audioBytes(file);
    if (!bytes || isPlaceholder(*bytes)) return std::nullopt;
    return *bytes;
}

bool isWavOfUnknownLength(const std::string& head) {
    std::istringstream file(head);
    const std::optional<uint32_t> bytes = audioBytes(file);
    return bytes && isPlaceholder(*bytes);
}

}  // namespace sonivex_tool
