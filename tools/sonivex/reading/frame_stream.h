#pragma once

#include <functional>
#include <optional>
#include <string>

#include "audio_spec.h"
#include "pcm_format.h"
#include "source_report.h"

namespace sonivex_tool {

/** A file opened for reading its frames from the beginning. */
struct FrameStream {
    std::string codec;  // libavcodec's name for the codec
    AudioSpec spec;     // of every frame
    /** Returns the next frame, or null at the end. @throw Failure, also for a pending signal */
    std::function<FramePtr()> read;
    int rest_bytes = 0;  // after the last whole frame of a file of bare samples
    /** Returns the damage that `read` has met so far. Empty: the file cannot be damaged. */
    std::function<DamageReport()> damage = {};
};

/** Opens the first audio stream of a file, or a file of bare samples if `format` is given. @throw Failure */
FrameStream openFrameStream(const std::string& path, const std::optional<PcmFormat>& format);

}  // namespace sonivex_tool
