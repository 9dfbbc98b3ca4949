#pragma once

#include <vector>

#include "av_objects.h"

namespace sonivex_tool {

// Lists of what an encoder declares to support. An empty list means that the encoder declares no limits.

/** Sample formats that the encoder declares. */
std::vector<AVSampleFormat> sampleFormats(const AVCodec& codec);

/** Sample rates in Hz that the encoder declares. For a codec that has a single rate by definition, only that
 * rate, even if its encoder declares none. */
std::vector<int> sampleRatesHz(const AVCodec& codec);

/** Channel layouts that the encoder declares, or else those that its codec names (Opus, AAC). The layouts are
 * owned by FFmpeg or own no memory. */
std::vector<AVChannelLayout> channelLayouts(const AVCodec& codec);

}  // namespace sonivex_tool
