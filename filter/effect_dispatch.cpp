// Runs the selected effect on one block of 16-bit PCM and puts the result back into its frame. The handles of
// the effects are made here, by the first frame that needs one, and live until `flush`.

extern "C" {
#include <libavutil/frame.h>
}

#include "SonivexFilter.h"
#include "sonivex/normalizer.h"
#include "vorlin/log.h"

namespace Vorlin {

sonivexFilter::Outcome sonivexFilter::dispatch(Effect effect, IQFFrame::audioInfo& info, AVFrame* frame) {
    const auto* in = reinterpret_cast<const short*>(frame->extended_data[0]);
    const int frames = frame->nb_samples;
    const int outChannels = info.channels;
    std::unique_ptr<short[]> block;
    switch (effect) {
        case Effect::Normalizer:
            block = normalize(in, info.channels, info.sample_rate, frames);
            break;
        case Effect::Dialogue:
        case Effect::Surround:
        case Effect::None:
            return processed();
    }
    if (!block) return givenUp(kFrameLost);
    if (putBack(info, frame, block.get(), outChannels, frames) < 0) return givenUp(kFrameLost);
    return processed();
}

// @return the processed block, [frames][channels]; null when the frame is lost.
std::unique_ptr<short[]> sonivexFilter::normalize(const short* in, int channels, int sampleRate, int frames) {
    if (mNormalizerHandle == nullptr) {
        __log_print(LOG_DEBUG, kFilterName, "sonivex creating normalizer handler. channels=%d, sampleRate=%d",
                    channels, sampleRate);
        mNormalizerHandle = aem_CreateNormalizer(channels, sampleRate);
        if (mNormalizerHandle == nullptr) {
            __log_print(LOG_WARNING, kFilterName, "sonivex createNormalizer failed!");
            return nullptr;
        }
    }
    std::unique_ptr<short[]> out(
        new short[static_cast<std::size_t>(channels) * static_cast<std::size_t>(frames)]);
    const int result =
        aem_ProcessNormalizer(mNormalizerHandle, in, out.get(), frames, static_cast<int8_t>(channels));
    if (result < 0) {
        __log_print(LOG_ERROR, kFilterName, "sonivex ProcessNormalizer failed! ret=%d", result);
        return nullptr;
    }
    return out;
}

void sonivexFilter::releaseHandles() {
    if (mNormalizerHandle != nullptr) aem_ReleaseNormalizer(mNormalizerHandle);
    mNormalizerHandle = nullptr;
}

}  // namespace Vorlin
