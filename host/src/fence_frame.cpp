#include "fence_frame.h"

#include <new>

#include "vorlin/av_compat.h"
#include "vorlin/owned_av_frame.h"

extern "C" {
#include <libavutil/samplefmt.h>
}

namespace Vorlin {

namespace {

constexpr int kFenceChannels = 3;
constexpr int kFenceFrames = 1;
constexpr int kAnyRate_hz = 48000;

bool isSampleFormat(int format) {
    return format >= 0 && format < AV_SAMPLE_FMT_NB;
}

}  // namespace

std::unique_ptr<FenceFrame> FenceFrame::make(const audioInfo& stream, uint64_t number) {
    OwnedAVFrame frame(av_frame_alloc());
    if (!frame) return nullptr;
    frame->format = isSampleFormat(stream.format) ? stream.format : AV_SAMPLE_FMT_S16;
    frame->sample_rate = stream.sample_rate > 0 ? stream.sample_rate : kAnyRate_hz;
    frame->nb_samples = kFenceFrames;
    if (av::setFrameDefaultLayout(frame.get(), kFenceChannels) < 0) return nullptr;
    if (av_frame_get_buffer(frame.get(), 0) < 0) return nullptr;
    const auto format = static_cast<AVSampleFormat>(frame->format);
    av_samples_set_silence(frame->extended_data, 0, kFenceFrames, kFenceChannels, format);

    std::unique_ptr<FenceFrame> fence(new (std::nothrow) FenceFrame(frame.get(), number));
    if (fence) (void)frame.release();  // the fence owns it now
    return fence;
}

}  // namespace Vorlin
