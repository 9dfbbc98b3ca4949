#pragma once

#include "av_objects.h"

namespace sonivex_tool {

/** The tags that `output` shall carry, with its one audio stream, so that it says of itself what `source`
 * said of `sourceStream`. Left out is what describes the old file rather than the recording: its encoder, its
 * statistics, its gapless and loudness figures. */
void copyMetadata(const AVFormatContext& source, const AVStream& sourceStream, AVFormatContext& output,
                  AVStream& outputStream);

}  // namespace sonivex_tool
