#include "format_converter.h"

#include <libavutil/samplefmt.h>

#include "failure.h"

namespace sonivex_tool {
namespace {

[[noreturn]] void fail(int averror) {
    throw Failure(ExitCode::Internal, "cannot convert the audio: " + errorText(averror));
}

// Joins `first` and `second`, either of which may be null.
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
    AVChannelLayout source_layout = source.layout;  // older releases take a non-const layout
    int result = swr_alloc_set_opts2(&context, &target_.layout, target_.format, target_.rate_hz,
                                     &source_layout, source.format, source.rate_hz, 0, nullptr);
    resampler_.reset(context);
    if (result >= 0) result = swr_init(context);
    if (result < 0) {
        resampler_.reset();
        fail(result);
    }
    source_ = source;
}

FramePtr FormatConverter::run(const AVFrame* input) {
    const int input_frames = input != nullptr ? input->nb_samples : 0;
    const int room = swr_get_out_samples(resampler_.get(), input_frames);
    if (room < 0) fail(room);
    if (room == 0) return nullptr;
    FramePtr output = makeFrame(target_, room);
    // The const qualifiers of the input planes differ between releases of libswresample.
    const auto** planes = input != nullptr ? const_cast<const uint8_t**>(input->extended_data) : nullptr;
    const int produced = swr_convert(resampler_.get(), output->extended_data, room, planes, input_frames);
    if (produced < 0) fail(produced);
    if (produced == 0) return nullptr;
    output->nb_samples = produced;
    return output;
}

FramePtr FormatConverter::convert(FramePtr frame) {
    const AudioSpec source = specOf(*frame);
    FramePtr rest;
    if (resampler_ != nullptr && !(source == source_)) rest = flush();
    if (resampler_ == nullptr && source == target_) return joined(std::move(rest), std::move(frame), target_);
    if (resampler_ == nullptr) open(source);
    return joined(std::move(rest), run(frame.get()), target_);
}

FramePtr FormatConverter::flush() {
    if (resampler_ == nullptr) return nullptr;
    FramePtr rest = run(nullptr);
    resampler_.reset();
    return rest;
}

}  // namespace sonivex_tool
