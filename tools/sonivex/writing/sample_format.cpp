#include "sample_format.h"

#include <libavutil/samplefmt.h>

#include <array>
#include <limits>

namespace sonivex_tool {
namespace {

constexpr std::array<const char*, 6> kPlainNames = {"u8", "s16", "s32", "s64", "flt", "dbl"};

bool isFloat(AVSampleFormat packed) {
    return packed == AV_SAMPLE_FMT_FLT || packed == AV_SAMPLE_FMT_DBL;
}

// Bits of a sample that a format preserves exactly.
int precisionBits(AVSampleFormat packed) {
    if (packed == AV_SAMPLE_FMT_FLT) return 24;
    if (packed == AV_SAMPLE_FMT_DBL) return 53;
    return 8 * av_get_bytes_per_sample(packed);
}

// Distance of `choice` from `wanted`; smaller is better. In order of weight it counts precision lost,
// precision wasted, a change between integer and float (more if it can clip), and a change between packed and
// planar.
int distance(AVSampleFormat wanted, AVSampleFormat choice) {
    const AVSampleFormat from = av_get_packed_sample_fmt(wanted);
    const AVSampleFormat to = av_get_packed_sample_fmt(choice);
    const int gained = precisionBits(to) - precisionBits(from);
    const bool clips = isFloat(from) && !isFloat(to);
    const int loss_cost = gained < 0 ? 10'000 - 100 * gained : 0;
    const int waste_cost = gained > 0 ? 10 * gained : 0;
    const int kind_cost = (clips ? 4 : 0) + (isFloat(from) != isFloat(to) ? 2 : 0);
    return loss_cost + waste_cost + kind_cost + (wanted == choice ? 0 : 1);
}

}  // namespace

SampleFormat sampleFormatNamed(const std::string& name) {
    if (name == "s24") return {AV_SAMPLE_FMT_S32, 24};
    for (const char* plain : kPlainNames) {
        if (name == plain) return {av_get_sample_fmt(plain), 0};
    }
    return {};
}

std::string nameOf(const SampleFormat& format) {
    const AVSampleFormat packed = av_get_packed_sample_fmt(format.format);
    if (packed == AV_SAMPLE_FMT_S32 && format.significant_bits == 24) return "s24";
    const char* name = av_get_sample_fmt_name(packed);
    return name != nullptr ? name : "unknown";
}

AVSampleFormat nearestSampleFormat(AVSampleFormat wanted, const std::vector<AVSampleFormat>& choices) {
    AVSampleFormat best = wanted;
    int best_distance = std::numeric_limits<int>::max();
    for (const AVSampleFormat choice : choices) {
        const int d = distance(wanted, choice);
        if (d < best_distance) {
            best_distance = d;
            best = choice;
        }
    }
    return best;
}

}  // namespace sonivex_tool
