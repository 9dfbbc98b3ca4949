// Runs the selected effect on one block of 16-bit PCM and puts the result back into the frame. The first
// frame that needs an effect's handle makes it here. A handle lives until `flush` or until a frame has
// another channel count or sample rate.

extern "C" {
#include <libavutil/frame.h>
}

#include "SonivexFilter.h"
#include "effects.h"
#include "vorlin/log.h"

namespace Vorlin {

sonivexFilter::Outcome sonivexFilter::dispatch(const EffectRecord& effect, IQFFrame::audioInfo& info,
                                               AVFrame* frame) {
    const InputBlock in{reinterpret_cast<const short*>(frame->extended_data[0]), info.channels,
                        info.sample_rate, frame->nb_samples};
    // The switch is read once, because a change between two readings would dump an input without its output,
    // or the reverse.
    const bool is_dumped = mEnableDump;
    if (is_dumped) dumpPCMData(in.samples, in.channels, in.frames, effect.name, true);

    // The filter rebuilds its input graph after a lost frame. If the player has changed the stream without a
    // flush, the handles do not fit any more.
    if (mHandleChannels != in.channels || mHandleSampleRate != in.sampleRate) releaseHandles();
    mHandleChannels = in.channels;
    mHandleSampleRate = in.sampleRate;

    const int out_channels = effect.output_channels(*this, in.channels);
    const std::unique_ptr<short[]> block = runEffect(effect, in, out_channels);
    if (!block) return givenUp(kFrameLost);
    if (putBack(info, frame, block.get(), out_channels, in.frames) < 0) return givenUp(kFrameLost);
    if (is_dumped) dumpPCMData(block.get(), out_channels, in.frames, effect.name, false);
    return processed();
}

// @return the processed block, [in.frames][out_channels]; null when the frame is lost, which is logged.
std::unique_ptr<short[]> sonivexFilter::runEffect(const EffectRecord& effect, const InputBlock& in,
                                                  int out_channels) {
    void*& handle = this->*effect.handle;
    if (handle == nullptr) handle = effect.create(*this, in);
    if (handle == nullptr) {
        __log_print(LOG_WARNING, kFilterName, "sonivex create%s failed!", effect.c_name);
        return nullptr;
    }
    auto out = makeBlock(out_channels, in.frames);
    const int result = effect.process(handle, in, out.get());
    if (result < 0) {
        __log_print(LOG_ERROR, kFilterName, "sonivex Process%s failed! ret=%d", effect.c_name, result);
        return nullptr;
    }
    return out;
}

void sonivexFilter::releaseHandles() {
    for (const EffectRecord& effect : allEffects()) {
        void*& handle = this->*effect.handle;
        if (handle != nullptr) effect.release(handle);
        handle = nullptr;
    }
}

}  // namespace Vorlin
