#pragma once

extern "C" {
#include <libavutil/frame.h>
}

#include <memory>

namespace Vorlin {

/** Frees an AVFrame and drops its references to buffers. */
struct AVFrameDeleter {
    /** Frees `frame`; null is allowed. [any] not real-time safe: frees memory */
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};

/** An AVFrame that is freed with its owner. */
using OwnedAVFrame = std::unique_ptr<AVFrame, AVFrameDeleter>;

}  // namespace Vorlin
