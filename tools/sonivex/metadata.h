#pragma once

#include "av_objects.h"

namespace sonivex_tool {

/** The tags that `output` shall carry, with its one audio stream, so that it says of itself what `source`
 * said of `source_stream`. Left out is what describes the old file rather than the recording: its encoder, its
 * statistics, its gapless and loudness figures. */
void copyMetadata(const AVFormatContext& source, const AVStream& source_stream, AVFormatContext& output,
                  AVStream& output_stream);

}  // namespace sonivex_tool
