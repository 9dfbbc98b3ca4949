#pragma once

#include "av_objects.h"

namespace sonivex_tool {

/** Copies tags and disposition from `source` and `source_stream` to `output` and its rendered audio stream.
 *
 * Tags that describe the old file rather than the recording are left out: its encoder, its statistics, its
 * gapless and loudness figures. A tag that the output already has is kept. */
void copyMetadata(const AVFormatContext& source, const AVStream& source_stream, AVFormatContext& output,
                  AVStream& output_stream);

/** Copies tags and disposition of a stream that is itself copied. Tags that a muxer writes anew are left
 * out. */
void copyStreamMetadata(const AVStream& source, AVStream& output);

}  // namespace sonivex_tool
