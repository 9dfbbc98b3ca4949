#include "pair_comparison.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "delay_finder.h"
#include "format_converter.h"

namespace sonivex_tool {
namespace {

constexpr int kCompared_s = 10;
constexpr double kLongestShift_s = 0.5;
// Largest transform length. It bounds the memory: 2^21 values take 32 MiB. From 200 kHz on it also shortens
// the compared time.
constexpr int64_t kMaxTransformed_frames = int64_t{1} << 21;

using Planes = std::vector<std::vector<float>>;

// Reads up to `count` frames of `stream` from frame `from` on, and passes them to `use` piece by piece as
// planar floats.
void forRange(const FrameStream& stream, int64_t from, int64_t count,
              const std::function<void(const AVFrame& planes)>& use) {
    AudioSpec spec = stream.spec;
    spec.format = AV_SAMPLE_FMT_FLTP;
    FormatConverter converter(spec);
    int64_t position = 0;
    while (position < from + count) {
        FramePtr frame = stream.read();
        if (frame == nullptr) return;
        const FramePtr planes = converter.convert(std::move(frame));
        if (planes == nullptr) continue;
        const int64_t begin = std::clamp<int64_t>(from - position, 0, planes->nb_samples);
        const int64_t end = std::clamp<int64_t>(from + count - position, 0, planes->nb_samples);
        position += planes->nb_samples;
        if (begin >= end) continue;
        for (int c = 0; c < spec.channels(); ++c)
            planes->extended_data[c] += begin * static_cast<int64_t>(sizeof(float));
        planes->nb_samples = static_cast<int>(end - begin);
        use(*planes);
    }
}

const float* plane(const AVFrame& frame, size_t channel) {
    return reinterpret_cast<const float*>(frame.extended_data[channel]);
}

// Returns `count` frames of each channel from frame `from` on, padded with silence after the stream's end.
Planes readPlanes(const FrameStream& stream, int64_t from, int64_t count) {
    Planes planes(static_cast<size_t>(stream.spec.channels()));
    for (auto& samples : planes) samples.reserve(static_cast<size_t>(count));
    forRange(stream, from, count, [&](const AVFrame& frame) {
        for (size_t c = 0; c < planes.size(); ++c) {
            planes[c].insert(planes[c].end(), plane(frame, c), plane(frame, c) + frame.nb_samples);
        }
    });
    for (auto& samples : planes) samples.resize(static_cast<size_t>(count), 0.0F);
    return planes;
}

double energyOf(const FrameStream& stream, int64_t from, int64_t count) {
    const auto channels = static_cast<size_t>(stream.spec.channels());
    double energy = 0.0;
    forRange(stream, from, count, [&](const AVFrame& frame) {
        for (size_t c = 0; c < channels; ++c) {
            for (int n = 0; n < frame.nb_samples; ++n) {
                const auto sample = static_cast<double>(plane(frame, c)[n]);
                energy += sample * sample;
            }
        }
    });
    return energy;
}

// Sums all channels into the first and removes the others.
void mixDown(Planes& planes) {
    for (size_t c = 1; c < planes.size(); ++c) {
        for (size_t n = 0; n < planes[c].size(); ++n) planes[0][n] += planes[c][n];
    }
    planes.resize(1);
}

std::optional<int64_t> delayBetween(const ComparedSide& input, const ComparedSide& output) {
    if (!input.first_audible_frame || !output.first_audible_frame) return std::nullopt;
    const FrameStream before = input.open();
    const FrameStream after = output.open();
    const int rate_hz = before.spec.rate_hz;
    const int longest = static_cast<int>(kLongestShift_s * rate_hz);
    const int64_t from = std::max<int64_t>(*input.first_audible_frame - longest, 0);
    const int64_t length = std::max(input.frames, output.frames) - from;
    const int64_t count =
        std::min({length, int64_t{kCompared_s} * rate_hz, kMaxTransformed_frames - longest});
    Planes before_planes = readPlanes(before, from, count);
    Planes after_planes = readPlanes(after, from, count);
    if (before_planes.size() != after_planes.size()) {
        mixDown(before_planes);
        mixDown(after_planes);
    }
    std::vector<ChannelPair> pairs;
    for (size_t c = 0; c < before_planes.size(); ++c) pairs.push_back({before_planes[c], after_planes[c]});
    return findDelay(pairs, static_cast<int>(std::min<int64_t>(longest, count - 1)));
}

}  // namespace

PairDifference comparePair(const ComparedSide& input, const ComparedSide& output) {
    PairDifference difference;
    difference.delay_frames = delayBetween(input, output);
    const int64_t delay = difference.delay_frames.value_or(0);
    const int64_t input_from = std::max<int64_t>(-delay, 0);
    const int64_t output_from = std::max<int64_t>(delay, 0);
    const int64_t count = std::min(input.frames - input_from, output.frames - output_from);
    const double before = energyOf(input.open(), input_from, count);
    const double after = energyOf(output.open(), output_from, count);
    const bool both_sound = before > 0.0 && after > 0.0;
    if (both_sound && std::isfinite(before) && std::isfinite(after))
        difference.gain_db = 10.0 * std::log10(after / before);
    return difference;
}

}  // namespace sonivex_tool
