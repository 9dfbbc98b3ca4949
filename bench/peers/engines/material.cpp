#include "material.h"

#include <algorithm>
#include <span>
#include <stdexcept>

#include "convolve_reverb.h"
#include "response_formats.h"
#include "support/signals/recorded_speech.h"
#include "support/signals/signals.h"
#include "unit_scale.h"

namespace compare {
namespace {

using Table = ConvolveReverb::Table;
using Tables = std::span<const Table* const>;

#define ADDRESS(name) &ConvolveReverb::g_##name,
const Table* const kBingo2[] = {SONIVEX_TABLES_BINGO_2(ADDRESS)};
const Table* const kBingo51[] = {SONIVEX_TABLES_BINGO_5_1(ADDRESS)};
const Table* const kBingo71[] = {SONIVEX_TABLES_BINGO_7_1(ADDRESS)};
const Table* const kSurround2[] = {SONIVEX_TABLES_SURROUND_2(ADDRESS, mode1)};
const Table* const kSurround51[] = {SONIVEX_TABLES_SURROUND_5_1(ADDRESS, mode1)};
const Table* const kSurround71[] = {SONIVEX_TABLES_SURROUND_7_1(ADDRESS, mode1)};
#undef ADDRESS

constexpr std::size_t kLowFrequencyChannel = 3;

// Adds up the responses that share a path.
void add(Stage& stage, std::size_t channel, std::size_t ear, const Table& table, double divisor) {
    std::vector<float> response;
    for (const std::int16_t sample : table) response.push_back(static_cast<float>(sample / divisor));
    for (Path& path : stage.paths) {
        if (path.channel != channel || path.ear != ear) continue;
        path.response.resize(std::max(path.response.size(), response.size()));
        for (std::size_t i = 0; i < response.size(); ++i) path.response[i] += response[i];
        return;
    }
    stage.paths.push_back({channel, ear, response});
}

// Tables come source by source, left ear before right.
Stage toBothEars(std::size_t channels, Tables tables, double divisor, bool has_low_frequency) {
    Stage stage{channels, {}};
    std::size_t channel = 0;
    for (std::size_t i = 0; i < tables.size(); i += 2) {
        if (channel == kLowFrequencyChannel && !has_low_frequency) ++channel;
        add(stage, channel, 0, *tables[i], divisor);
        add(stage, channel, 1, *tables[i + 1], divisor);
        ++channel;
    }
    return stage;
}

// Each side stays at its own ear.
Stage toOwnEar(Tables tables, double divisor) {
    Stage stage{2, {}};
    for (std::size_t i = 0; i < tables.size(); ++i) add(stage, i % 2, i % 2, *tables[i], divisor);
    return stage;
}

Stage headphoneVoicing() {
    Stage stage{2, {}};
    add(stage, 0, 0, ConvolveReverb::g_dolbyL441, sonivex::kAudioFormat.divisor);
    add(stage, 1, 1, ConvolveReverb::g_dolbyR441, sonivex::kAudioFormat.divisor);
    return stage;
}

Stage loudspeakers(std::size_t channels, int type) {
    const bool is_neutral = type == 1;
    switch (channels) {
        case 2:
            return is_neutral ? toBothEars(2, kBingo2, sonivex::kBingo2Format.divisor, true)
                              : toOwnEar(kSurround2, sonivex::kSurroundFormat.divisor);
        case 6:
            return toBothEars(6, is_neutral ? Tables(kBingo51) : Tables(kSurround51),
                              is_neutral ? sonivex::kBingo51Format.divisor : sonivex::kSurroundFormat.divisor,
                              is_neutral);
        case 8:
            return toBothEars(8, is_neutral ? Tables(kBingo71) : Tables(kSurround71),
                              is_neutral ? sonivex::kBingo71Format.divisor : sonivex::kSurroundFormat.divisor,
                              is_neutral);
        default:
            throw std::invalid_argument("no layout has " + std::to_string(channels) +
                                        " channels; use 2, 6 or 8");
    }
}

}  // namespace

std::size_t Stage::longestResponse() const {
    std::size_t longest = 0;
    for (const Path& path : paths) longest = std::max(longest, path.response.size());
    return longest;
}

Layout makeLayout(std::size_t channels, int type) {
    static_assert(kMode == 1, "the tables above are those of mode 1");
    Layout layout{channels == 2   ? "stereo"
                  : channels == 6 ? "5.1"
                                  : "7.1",
                  type,
                  {loudspeakers(channels, type)}};
    if (type == 13) layout.stages.push_back(headphoneVoicing());
    return layout;
}

std::vector<float> Material::interleaved() const {
    std::vector<float> samples(pcm.size());
    sonivex::int16ToUnitScale(pcm.data(), static_cast<int>(pcm.size()), samples.data());
    return samples;
}

std::vector<std::vector<float>> Material::planes() const {
    const std::vector<float> samples = interleaved();
    std::vector<std::vector<float>> planes(channels);
    for (std::size_t i = 0; i < samples.size(); ++i) planes[i % channels].push_back(samples[i]);
    return planes;
}

Material makeMaterial(std::size_t channels, std::size_t sounding, std::size_t frames, int loudness) {
    constexpr int kNoiseAmplitude = 800;  // full scale is 32768; keeps every engine clear of denormals
    constexpr int kSpeechDivisor = 4;
    const test::Pcm speech = test::recordedSpeech(static_cast<int>(channels));
    Material material{channels, test::noise(1, static_cast<int>(frames * channels), kNoiseAmplitude)};
    for (std::size_t i = 0; i < material.pcm.size(); ++i) {
        const bool sounds = i % channels < sounding;
        const int sample = material.pcm[i] + speech[i % speech.size()] / kSpeechDivisor;
        material.pcm[i] =
            static_cast<std::int16_t>(sounds ? std::clamp(loudness * sample, -32768, 32767) : 0);
    }
    return material;
}

}  // namespace compare
