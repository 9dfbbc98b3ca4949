#pragma once

#include <functional>
#include <optional>
#include <string>

#include "audio_spec.h"
#include "pcm_format.h"

namespace sonivex_tool {

/** The frames of a file, from its beginning. */
struct FrameStream {
    std::string codec;  // libavcodec's name
    AudioSpec spec;     // of every frame
    /** The next frame, or null at the end. @throw Failure, of a pending signal too */
    std::function<FramePtr()> read;
    int rest_bytes = 0;  // at the end of a file of bare samples, that are no whole frame
};

/** Open an audio file, or one of bare samples when `format` says how to read it. @throw Failure */
FrameStream openFrameStream(const std::string& path, const std::optional<PcmFormat>& format);

}  // namespace sonivex_tool
