// Runs the selected effect on one block of 16-bit PCM and puts the result back into its frame. The handles of
// the effects are made here, by the first frame that needs one, and live until `flush` or a frame of another
// channel count or sample rate.

extern "C" {
#include <libavutil/frame.h>
}

#include <cstdint>

#include "SonivexFilter.h"
#include "sonivex/dialoguenhance.h"
#include "sonivex/normalizer.h"
#include "sonivex/surround.h"
#include "vorlin/log.h"

namespace Vorlin {

namespace {

// What a bin keeps without dialogue, and what full presence adds to it.
constexpr double kDialogueGainFloor_lin = 1.0;
constexpr double kDialogueGainScale_lin = 1.0;

std::unique_ptr<short[]> makeBlock(int channels, int frames) {
    return std::unique_ptr<short[]>(
        new short[static_cast<std::size_t>(channels) * static_cast<std::size_t>(frames)]());
}

// The effect's name in the names of dump files.
std::string dumpNameOf(Effect effect) {
    switch (effect) {
        case Effect::Dialogue:
            return "dialoguenhance";
        case Effect::Surround:
            return "surround";
        case Effect::Normalizer:
            return "normalizer";
        case Effect::None:
            break;
    }
    return {};
}

// Channels that surround of a type puts out.
int surroundOutputChannels(int type) {
    if (type == 6) return 6;
    if (type == 7) return 8;
    return 2;
}

}  // namespace

sonivexFilter::Outcome sonivexFilter::dispatch(Effect effect, IQFFrame::audioInfo& info, AVFrame* frame) {
    const InputBlock in{reinterpret_cast<const short*>(frame->extended_data[0]), info.channels,
                        info.sample_rate, frame->nb_samples};
    // Read once: a switch in between would leave an input without its output, or the reverse.
    const bool is_dumped = mEnableDump;
    const std::string dump_name = dumpNameOf(effect);
    if (is_dumped) dumpPCMData(in.samples, in.channels, in.frames, dump_name, true);

    // The input graph is built anew after a lost frame, perhaps for another stream without a flush in
    // between.
    if (mHandleChannels != in.channels || mHandleSampleRate != in.sampleRate) releaseHandles();
    mHandleChannels = in.channels;
    mHandleSampleRate = in.sampleRate;

    int out_channels = info.channels;
    std::unique_ptr<short[]> block;
    switch (effect) {
        case Effect::Dialogue:
            block = enhanceDialogue(in);
            break;
        case Effect::Surround:
            out_channels = surroundOutputChannels(mSurroundType);
            block = renderSurround(in, out_channels);
            break;
        case Effect::Normalizer:
            block = normalize(in);
            break;
        case Effect::None:
            return processed();
    }
    if (!block) return givenUp(kFrameLost);
    if (putBack(info, frame, block.get(), out_channels, in.frames) < 0) return givenUp(kFrameLost);
    if (is_dumped) dumpPCMData(block.get(), out_channels, in.frames, dump_name, false);
    return processed();
}

// @param in two channels. @return the enhanced block, [frames][2]; null when the frame is lost.
std::unique_ptr<short[]> sonivexFilter::enhanceDialogue(const InputBlock& in) {
    if (mDialogueHandle == nullptr) {
        const double voice = mVoice;
        __log_print(LOG_DEBUG, kFilterName,
                    "sonivex creating dialoguenhance handler. channels=%d, sampleRate=%d, voice=%f",
                    in.channels, in.sampleRate, voice);
        mDialogueHandle = aem_CreateDialoguEnhance(in.channels, in.sampleRate, kDialogueGainFloor_lin,
                                                   kDialogueGainScale_lin, voice);
        if (mDialogueHandle == nullptr) {
            __log_print(LOG_WARNING, kFilterName, "sonivex createDialoguEnhance failed!");
            return nullptr;
        }
    }
    auto out = makeBlock(in.channels, in.frames);
    const int result =
        aem_ProcessDialoguEnhance(mDialogueHandle, in.samples, out.get(), in.frames, in.sampleRate);
    if (result < 0) {
        __log_print(LOG_ERROR, kFilterName, "sonivex ProcessDialoguEnhance failed! ret=%d", result);
        return nullptr;
    }
    return out;
}

// @return the rendered block, [frames][outChannels]; null when the frame is lost.
std::unique_ptr<short[]> sonivexFilter::renderSurround(const InputBlock& in, int out_channels) {
    if (mSurroundHandle == nullptr) {
        const int type = mSurroundType;
        const int mode = mSurroundMode;
        const int limiter = mSurroundLimiter;
        __log_print(
            LOG_DEBUG, kFilterName,
            "sonivex creating surround handler. channels=%d, sampleRate=%d, type=%d, mode=%d, limiter=%d",
            in.channels, in.sampleRate, type, mode, limiter);
        mSurroundHandle = aem_CreateSurround(in.channels, in.sampleRate, type, mode, limiter);
        if (mSurroundHandle == nullptr) {
            __log_print(LOG_WARNING, kFilterName, "sonivex createSurround failed!");
            return nullptr;
        }
    }
    // A handle for one channel reads two samples a frame all the same: left and right are equal then.
    std::unique_ptr<short[]> widened;
    if (in.channels == 1) {
        widened = makeBlock(2, in.frames);
        short* stereo = widened.get();
        for (int i = 0; i < in.frames; ++i) {
            *stereo++ = in.samples[i];
            *stereo++ = in.samples[i];
        }
    }
    auto out = makeBlock(out_channels, in.frames);
    const short* samples = widened ? widened.get() : in.samples;
    const int result = aem_ProcessSurround(mSurroundHandle, samples, out.get(), in.frames);
    if (result < 0) {
        __log_print(LOG_ERROR, kFilterName, "sonivex ProcessSurround failed! ret=%d", result);
        return nullptr;
    }
    return out;
}

// @return the processed block, [frames][channels]; null when the frame is lost.
std::unique_ptr<short[]> sonivexFilter::normalize(const InputBlock& in) {
    if (mNormalizerHandle == nullptr) {
        __log_print(LOG_DEBUG, kFilterName, "sonivex creating normalizer handler. channels=%d, sampleRate=%d",
                    in.channels, in.sampleRate);
        mNormalizerHandle = aem_CreateNormalizer(in.channels, in.sampleRate);
        if (mNormalizerHandle == nullptr) {
            __log_print(LOG_WARNING, kFilterName, "sonivex createNormalizer failed!");
            return nullptr;
        }
    }
    auto out = makeBlock(in.channels, in.frames);
    const int result = aem_ProcessNormalizer(mNormalizerHandle, in.samples, out.get(), in.frames,
                                             static_cast<int8_t>(in.channels));
    if (result < 0) {
        __log_print(LOG_ERROR, kFilterName, "sonivex ProcessNormalizer failed! ret=%d", result);
        return nullptr;
    }
    return out;
}

void sonivexFilter::releaseHandles() {
    if (mSurroundHandle != nullptr) aem_ReleaseSurround(mSurroundHandle);
    mSurroundHandle = nullptr;
    if (mDialogueHandle != nullptr) aem_ReleaseDialoguEnhance(mDialogueHandle);
    mDialogueHandle = nullptr;
    if (mNormalizerHandle != nullptr) aem_ReleaseNormalizer(mNormalizerHandle);
    mNormalizerHandle = nullptr;
}

}  // namespace Vorlin
