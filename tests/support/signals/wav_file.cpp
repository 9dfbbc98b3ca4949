#include "support/signals/wav_file.h"

#include <bit>
#include <stdexcept>

namespace test {
namespace {

constexpr std::uint16_t kPcmTag = 1;
constexpr std::uint16_t kFloatTag = 3;

template <typename Number>
void append(std::string& bytes, Number number) {
    for (std::size_t i = 0; i < sizeof(Number); ++i) bytes.push_back(static_cast<char>(number >> (8 * i)));
}

std::string wavOf(std::uint16_t tag, std::size_t sample_bytes, const std::string& data, int channels,
                  std::uint32_t rate_hz) {
    constexpr std::uint32_t kHeaderAfterSize_bytes = 36;
    constexpr std::uint32_t kFormat_bytes = 16;
    const auto frame_bytes = static_cast<std::uint16_t>(sample_bytes * static_cast<std::size_t>(channels));
    std::string bytes = "RIFF";
    append(bytes, static_cast<std::uint32_t>(kHeaderAfterSize_bytes + data.size()));
    bytes += "WAVEfmt ";
    append(bytes, kFormat_bytes);
    append(bytes, tag);
    append(bytes, static_cast<std::uint16_t>(channels));
    append(bytes, rate_hz);
    append(bytes, rate_hz * frame_bytes);
    append(bytes, frame_bytes);
    append(bytes, static_cast<std::uint16_t>(8 * sample_bytes));
    bytes += "data";
    append(bytes, static_cast<std::uint32_t>(data.size()));
    return bytes + data;
}

template <typename Number>
Number numberAt(const std::string& bytes, std::size_t offset) {
    Number number = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
        const auto byte = static_cast<unsigned char>(bytes.at(offset + i));
        number = static_cast<Number>(number | static_cast<Number>(byte) << (8 * i));
    }
    return number;
}

bool hasTag(const std::string& bytes, std::size_t offset, const char* tag) {
    return bytes.size() >= offset + 4 && bytes.compare(offset, 4, tag) == 0;
}

void readSamples(Wav& wav, std::uint16_t tag, const std::string& bytes, std::size_t body,
                 std::size_t length) {
    if (tag == kPcmTag) {
        wav.pcm.resize(length / sizeof(std::int16_t));
        for (std::size_t i = 0; i < wav.pcm.size(); ++i) {
            wav.pcm[i] = static_cast<std::int16_t>(numberAt<std::uint16_t>(bytes, body + 2 * i));
        }
    } else {
        wav.floats.resize(length / sizeof(float));
        for (std::size_t i = 0; i < wav.floats.size(); ++i) {
            wav.floats[i] = std::bit_cast<float>(numberAt<std::uint32_t>(bytes, body + 4 * i));
        }
    }
}

}  // namespace

std::string wavOf(const Pcm& samples, int channels, std::uint32_t rate_hz) {
    std::string data;
    for (const std::int16_t sample : samples) append(data, static_cast<std::uint16_t>(sample));
    return wavOf(kPcmTag, sizeof(std::int16_t), data, channels, rate_hz);
}

std::string wavOf(const std::vector<float>& samples, int channels, std::uint32_t rate_hz) {
    std::string data;
    for (const float sample : samples) append(data, std::bit_cast<std::uint32_t>(sample));
    return wavOf(kFloatTag, sizeof(float), data, channels, rate_hz);
}

Wav parseWav(const std::string& bytes, const std::string& path) {
    const std::string file = "\"" + path + "\"";
    if (!hasTag(bytes, 0, "RIFF") || !hasTag(bytes, 8, "WAVE"))
        throw std::runtime_error(file + " is not a WAV file");
    Wav wav;
    std::uint16_t tag = 0;
    std::size_t chunk = 12;
    while (chunk + 8 <= bytes.size()) {
        const auto length = numberAt<std::uint32_t>(bytes, chunk + 4);
        const std::size_t body = chunk + 8;
        if (body + length > bytes.size()) throw std::runtime_error(file + " ends within a chunk");
        if (hasTag(bytes, chunk, "fmt ")) {
            tag = numberAt<std::uint16_t>(bytes, body);
            wav.channels = numberAt<std::uint16_t>(bytes, body + 2);
            wav.rate_hz = numberAt<std::uint32_t>(bytes, body + 4);
            const auto bits = numberAt<std::uint16_t>(bytes, body + 14);
            const bool is_known = (tag == kPcmTag && bits == 16) || (tag == kFloatTag && bits == 32);
            if (!is_known) throw std::runtime_error(file + " holds neither 16-bit PCM nor 32-bit floats");
        }
        if (hasTag(bytes, chunk, "data")) {
            if (tag == 0) throw std::runtime_error(file + " has samples before their format");
            readSamples(wav, tag, bytes, body, length);
            return wav;
        }
        chunk = body + length + length % 2;
    }
    throw std::runtime_error(file + " has no data chunk");
}

}  // namespace test
