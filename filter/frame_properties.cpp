#include "frame_properties.h"

extern "C" {
#include <libavutil/dict.h>
#include <libavutil/error.h>
#include <libavutil/frame.h>
}

namespace Vorlin {

int FrameProperties::save(const AVFrame* frame) {
    mSaved.reset(av_frame_alloc());
    if (!mSaved) return AVERROR(ENOMEM);
    return av_frame_copy_props(mSaved.get(), frame);
}

int FrameProperties::restore(AVFrame* frame) const {
    // av_frame_copy_props adds to the side data and metadata that are there, so those of the graph go first.
    while (frame->nb_side_data > 0) av_frame_remove_side_data(frame, frame->side_data[0]->type);
    av_dict_free(&frame->metadata);
    return av_frame_copy_props(frame, mSaved.get());
}

}  // namespace Vorlin
