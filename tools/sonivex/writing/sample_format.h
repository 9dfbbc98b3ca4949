#pragma once

#include <string>
#include <vector>

#include "av_objects.h"

namespace sonivex_tool {

/** A sample format together with the bits of a sample that count. */
struct SampleFormat {
    AVSampleFormat format = AV_SAMPLE_FMT_NONE;
    int significant_bits = 0;  // if fewer than the format has (24 in s32), else 0
};

/** Returns the sample format that a user calls "u8", "s16", "s24", "s32", "s64", "flt" or "dbl"; it is
 * interleaved. Returns AV_SAMPLE_FMT_NONE for any other name. */
SampleFormat sampleFormatNamed(const std::string& name);

/** Returns the name by which `sampleFormatNamed` knows a format, be it interleaved or planar. */
std::string nameOf(const SampleFormat& format);

/** Picks from `choices` the sample format that loses the least precision of `wanted`, and of those the
 * smallest. Returns `wanted` itself if there are no choices. */
AVSampleFormat nearestSampleFormat(AVSampleFormat wanted, const std::vector<AVSampleFormat>& choices);

}  // namespace sonivex_tool
