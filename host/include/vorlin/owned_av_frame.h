#pragma once

extern "C" {
#include <libavutil/frame.h>
}

#include <memory>

namespace Vorlin {

/** Frees an AVFrame and gives back what it refers to. */
struct AVFrameDeleter {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};

using OwnedAVFrame = std::unique_ptr<AVFrame, AVFrameDeleter>;

}  // namespace Vorlin
