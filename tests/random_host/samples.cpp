#include "random_host/samples.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <limits>
#include <type_traits>
#include <vector>

namespace test {

namespace {

constexpr std::size_t kTableSamples = 1U << 15U;

template <typename T>
T noiseSample(Random& random) {
    if constexpr (std::is_floating_point_v<T>) {
        return static_cast<T>(random.between(-32768, 32767)) / T{32768};
    } else {
        return static_cast<T>(random.bits());
    }
}

// The noise is made once, because a soak needs a lot of it.
template <typename T>
std::span<const std::uint8_t> noiseOf() {
    static const std::vector<T> table = [] {
        Random random(sizeof(T));
        std::vector<T> samples(kTableSamples);
        std::generate(samples.begin(), samples.end(), [&random] { return noiseSample<T>(random); });
        return samples;
    }();
    return {reinterpret_cast<const std::uint8_t*>(table.data()), table.size() * sizeof(T)};
}

std::span<const std::uint8_t> noiseOf(AVSampleFormat packed) {
    switch (packed) {
        case AV_SAMPLE_FMT_U8:
            return noiseOf<std::uint8_t>();
        case AV_SAMPLE_FMT_S16:
            return noiseOf<std::int16_t>();
        case AV_SAMPLE_FMT_S32:
            return noiseOf<std::int32_t>();
        case AV_SAMPLE_FMT_FLT:
            return noiseOf<float>();
        case AV_SAMPLE_FMT_DBL:
            return noiseOf<double>();
        default:
            return noiseOf<std::int64_t>();
    }
}

void repeat(std::span<std::uint8_t> memory, std::span<const std::uint8_t> pattern) {
    for (std::size_t at = 0; at < memory.size(); at += pattern.size()) {
        std::memcpy(memory.data() + at, pattern.data(), std::min(pattern.size(), memory.size() - at));
    }
}

template <typename T>
void repeatSample(std::span<std::uint8_t> memory, T sample) {
    std::array<std::uint8_t, sizeof(T)> pattern{};
    std::memcpy(pattern.data(), &sample, sizeof(T));
    repeat(memory, pattern);
}

template <typename T>
void repeatOddSample(std::span<std::uint8_t> memory, std::uint32_t which) {
    constexpr T kOddSamples[] = {
        std::numeric_limits<T>::quiet_NaN(), std::numeric_limits<T>::infinity(),
        -std::numeric_limits<T>::infinity(), std::numeric_limits<T>::denorm_min(),
        std::numeric_limits<T>::max(),       T{-1.0},
    };
    repeatSample(memory, kOddSamples[which % std::size(kOddSamples)]);
}

void repeatBytes(std::span<std::uint8_t> memory, ByteSource& bytes) {
    std::array<std::uint8_t, 16> pattern{};
    for (std::uint8_t& each : pattern) each = bytes.byte();
    repeat(memory, pattern);
}

template <typename T>
bool areWithin(std::span<const std::uint8_t> memory) {
    for (std::size_t at = 0; at + sizeof(T) <= memory.size(); at += sizeof(T)) {
        T sample{};
        std::memcpy(&sample, memory.data() + at, sizeof(T));
        if (!(std::abs(sample) <= T{1})) return false;
    }
    return true;
}

}  // namespace

void fillSamples(std::span<std::uint8_t> memory, AVSampleFormat format, ByteSource& bytes) {
    if (memory.empty()) return;
    switch (bytes.below(8)) {
        case 0:
            std::fill(memory.begin(), memory.end(), std::uint8_t{0});
            break;
        case 1:
            repeatBytes(memory, bytes);
            break;
        case 2: {
            const std::uint32_t which = bytes.byte();
            if (format == AV_SAMPLE_FMT_FLT) {
                repeatOddSample<float>(memory, which);
            } else if (format == AV_SAMPLE_FMT_DBL) {
                repeatOddSample<double>(memory, which);
            } else {
                std::fill(memory.begin(), memory.end(), static_cast<std::uint8_t>(which));
            }
            break;
        }
        default:
            repeat(memory, noiseOf(format));
            break;
    }
}

void makeNoiseTables() {
    for (int format = 0; format < AV_SAMPLE_FMT_NB; ++format) {
        noiseOf(av_get_packed_sample_fmt(static_cast<AVSampleFormat>(format)));
    }
}

bool areWithinFullScale(std::span<const std::uint8_t> memory, AVSampleFormat format) {
    if (format == AV_SAMPLE_FMT_FLT) return areWithin<float>(memory);
    if (format == AV_SAMPLE_FMT_DBL) return areWithin<double>(memory);
    return true;
}

}  // namespace test
