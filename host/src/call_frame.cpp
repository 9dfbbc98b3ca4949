#include "call_frame.h"

#include <new>
#include <utility>

namespace Vorlin {

std::unique_ptr<CallFrame> CallFrame::make(OwnedAVFrame frame, uint64_t layout, Span span,
                                           const FilterTiming& timing) {
    OwnedAVFrame pushed(av_frame_clone(frame.get()));
    if (!pushed) return nullptr;
    std::unique_ptr<CallFrame> call(new (std::nothrow)
                                        CallFrame(frame.get(), std::move(pushed), span, timing));
    if (!call) return nullptr;
    (void)frame.release();  // the call owns it now
    call->getInfo().channel_layout = layout;
    return call;
}

bool CallFrame::isUntouched() const {
    const AVFrame* frame = *this;
    return frame != nullptr && frame->extended_data != nullptr && frame->format == mPushed->format &&
           frame->nb_samples == mPushed->nb_samples && frame->extended_data[0] == mPushed->extended_data[0];
}

}  // namespace Vorlin
