#include "format_converter.h"

#include <libavutil/samplefmt.h>

#include "failure.h"

namespace sonivex_tool {
namespace {

[[noreturn]] void fail(int averror) {
    throw Failure(ExitCode::Internal, "audio cannot be converted: " + errorText(averror));
}

/** `first` followed by `second`, either of which may be null. */
FramePtr joined(FramePtr first, FramePtr second, const AudioSpec& spec) {
    if (first == nullptr) return second;
    if (second == nullptr) return first;
    FramePtr all = makeFrame(spec, first->nb_samples + second->nb_samples);
    av_samples_copy(all->extended_data, first->extended_data, 0, 0, first->nb_samples, spec.channels(),
                    spec.format);
    av_samples_copy(all->extended_data, second->extended_data, first->nb_samples, 0, second->nb_samples,
                    spec.channels(), spec.format);
    return all;
}

}  // namespace

void FormatConverter::open(const AudioSpec& source) {
    SwrContext* context = nullptr;
    AVChannelLayout sourceLayout = source.layout;  // older releases ask for layouts that they could change
    int result = swr_alloc_set_opts2(&context, &mTarget.layout, mTarget.format, mTarget.rateHz, &sourceLayout,
                                     source.format, source.rateHz, 0, nullptr);
    mResampler.reset(context);
    if (result >= 0) result = swr_init(context);
    if (result < 0) {
        mResampler.reset();
        fail(result);
    }
    mSource = source;
}

FramePtr FormatConverter::run(const AVFrame* input) {
    const int inputFrames = input != nullptr ? input->nb_samples : 0;
    const int room = swr_get_out_samples(mResampler.get(), inputFrames);
    if (room < 0) fail(room);
    if (room == 0) return nullptr;
    FramePtr output = makeFrame(mTarget, room);
    // libswresample of some releases takes the input planes without const inside.
    const auto** planes = input != nullptr ? const_cast<const uint8_t**>(input->extended_data) : nullptr;
    const int produced = swr_convert(mResampler.get(), output->extended_data, room, planes, inputFrames);
    if (produced < 0) fail(produced);
    if (produced == 0) return nullptr;
    output->nb_samples = produced;
    return output;
}

FramePtr FormatConverter::convert(FramePtr frame) {
    const AudioSpec source = specOf(*frame);
    FramePtr rest;
    if (mResampler != nullptr && !(source == mSource)) rest = flush();
    if (mResampler == nullptr && source == mTarget) return joined(std::move(rest), std::move(frame), mTarget);
    if (mResampler == nullptr) open(source);
    return joined(std::move(rest), run(frame.get()), mTarget);
}

FramePtr FormatConverter::flush() {
    if (mResampler == nullptr) return nullptr;
    FramePtr rest = run(nullptr);
    mResampler.reset();
    return rest;
}

}  // namespace sonivex_tool
