#pragma once

#include <memory>

#include "vorlin/av_frame.h"
#include "vorlin/owned_av_frame.h"

namespace Vorlin {

/** Makes a frame of the framework that owns `frame`. @throws std::bad_alloc; `frame` is freed then. */
inline std::unique_ptr<AVQFFrame> wrapFrame(OwnedAVFrame frame) {
    std::unique_ptr<AVQFFrame> wrapped(new AVQFFrame(frame.get()));
    (void)frame.release();  // `wrapped` owns it now
    return wrapped;
}

}  // namespace Vorlin
