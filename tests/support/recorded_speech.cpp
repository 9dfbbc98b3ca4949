#include "support/recorded_speech.h"

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace test {
namespace {

template <typename Number>
Number littleEndianAt(const std::vector<char>& bytes, std::size_t offset) {
    Number number = 0;
    for (std::size_t i = 0; i < sizeof(Number); ++i) {
        const auto byte = static_cast<unsigned char>(bytes.at(offset + i));
        number = static_cast<Number>(number | static_cast<Number>(byte) << (8 * i));
    }
    return number;
}

bool hasTag(const std::vector<char>& bytes, std::size_t offset, const char* tag) {
    return bytes.size() >= offset + 4 && std::memcmp(bytes.data() + offset, tag, 4) == 0;
}

Pcm samplesOfMonoWav(const std::vector<char>& bytes, const std::string& path) {
    if (!hasTag(bytes, 0, "RIFF") || !hasTag(bytes, 8, "WAVE"))
        throw std::runtime_error("\"" + path + "\" is not a WAV file");
    std::size_t chunk = 12;
    while (chunk + 8 <= bytes.size()) {
        const auto length = littleEndianAt<std::uint32_t>(bytes, chunk + 4);
        const std::size_t body = chunk + 8;
        if (hasTag(bytes, chunk, "fmt ")) {
            const bool is_16_bit_mono = littleEndianAt<std::uint16_t>(bytes, body) == 1 &&
                                        littleEndianAt<std::uint16_t>(bytes, body + 2) == 1 &&
                                        littleEndianAt<std::uint16_t>(bytes, body + 14) == 16;
            if (!is_16_bit_mono) throw std::runtime_error("\"" + path + "\" is not 16-bit mono PCM");
        }
        if (hasTag(bytes, chunk, "data")) {
            Pcm pcm(length / 2);
            for (std::size_t i = 0; i < pcm.size(); ++i) {
                pcm[i] = static_cast<std::int16_t>(littleEndianAt<std::uint16_t>(bytes, body + 2 * i));
            }
            return pcm;
        }
        chunk = body + length + length % 2;
    }
    throw std::runtime_error("\"" + path + "\" has no data chunk");
}

}  // namespace

Pcm recordedSpeech(const std::string& name) {
    const std::string path = std::string(SONIVEX_SPEECH_FOLDER) + "/" + name + ".wav";
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error(
            "cannot open recording \"" + path +
            "\": install the package alsa-utils or configure with -DSONIVEX_SPEECH_FOLDER=<folder>");
    }
    const std::vector<char> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    return samplesOfMonoWav(bytes, path);
}

Pcm recordedSpeech(int channels) {
    const char* const names[] = {"Front_Left", "Front_Right", "Front_Center", "Rear_Center",
                                 "Rear_Left",  "Rear_Right",  "Side_Left",    "Side_Right"};
    std::vector<Pcm> recordings;
    for (int channel = 0; channel < channels; ++channel)
        recordings.push_back(recordedSpeech(names[channel % 8]));
    return interleaved(recordings);
}

}  // namespace test
