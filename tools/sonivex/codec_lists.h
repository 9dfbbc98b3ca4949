#pragma once

#include <vector>

#include "av_objects.h"

namespace sonivex_tool {

// What an encoder says it can take. An empty list says nothing: anything may do. A codec that only knows one
// rate has that one, whatever its encoder says.

std::vector<AVSampleFormat> sampleFormats(const AVCodec& codec);
std::vector<int> sampleRatesHz(const AVCodec& codec);
std::vector<AVChannelLayout> channelLayouts(const AVCodec& codec);

}  // namespace sonivex_tool
