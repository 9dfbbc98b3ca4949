#include "format_converter.h"

extern "C" {
#include <libavutil/mathematics.h>
#include <libavutil/opt.h>
#include <libavutil/samplefmt.h>
}

#include <algorithm>
#include <vector>

#include "failure.h"
#include "mixing_matrix.h"
#include "vorlin/av_compat.h"

namespace sonivex_tool {
namespace {

// libswresample's own resampler: a filter of 256 taps at the lower rate, which ends at 97 % of its bandwidth.
constexpr int kOwnFilterTaps = 256;
constexpr double kOwnCutoff = 0.97;
constexpr int kWidestQuantiserBits = 24;
// Silence at the end of the input: a tenth of a second, and more than any filter at the lowest rates.
constexpr int kSilencesPerSecond = 10;
constexpr int kShortestSilence_frames = 1024;

[[noreturn]] void fail(int averror) {
    if (averror == AVERROR(ENOMEM)) throw std::bad_alloc();
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

bool isInteger(AVSampleFormat format) {
    const AVSampleFormat packed = av_get_packed_sample_fmt(format);
    return packed != AV_SAMPLE_FMT_FLT && packed != AV_SAMPLE_FMT_DBL;
}

int bitsOf(AVSampleFormat format) {
    return 8 * av_get_bytes_per_sample(format);
}

int significantBits(const AudioSpec& target, const ConverterOptions& options) {
    return options.bits > 0 ? std::min(options.bits, bitsOf(target.format)) : bitsOf(target.format);
}

}  // namespace

FormatConverter::FormatConverter(const AudioSpec& target, const ConverterOptions& options)
    : target_(target), options_(options) {
    const int bits = significantBits(target, options);
    if (isInteger(target.format) && bits <= kWidestQuantiserBits)
        quantiser_.emplace(target, bits, options.dither);
}

// Returns true if samples of `source` may have more bits than those of the target.
bool FormatConverter::needsQuantiser(const AudioSpec& source) const {
    if (!quantiser_) return false;
    const bool computes =
        source.rate_hz != target_.rate_hz || av_channel_layout_compare(&source.layout, &target_.layout) != 0;
    return computes || !isInteger(source.format) ||
           bitsOf(source.format) > significantBits(target_, options_);
}

int FormatConverter::initialise(const AudioSpec& source, bool use_soxr) {
    SwrContext* context = nullptr;
    AVChannelLayout source_layout = source.layout;  // older releases take a non-const layout
    int result = swr_alloc_set_opts2(&context, &resampled_.layout, resampled_.format, resampled_.rate_hz,
                                     &source_layout, source.format, source.rate_hz, 0, nullptr);
    resampler_.reset(context);
    if (result < 0) return result;
    const bool mixes = av_channel_layout_compare(&source.layout, &resampled_.layout) != 0;
    if (source.rate_hz != resampled_.rate_hz || mixes)
        av_opt_set_sample_fmt(context, "internal_sample_fmt", AV_SAMPLE_FMT_DBLP, 0);
    if (use_soxr) {
        av_opt_set_int(context, "resampler", SWR_ENGINE_SOXR, 0);
        av_opt_set_double(context, "precision", options_.precision_bits, 0);
    } else {
        av_opt_set_int(context, "filter_size", kOwnFilterTaps, 0);
        av_opt_set_double(context, "cutoff", kOwnCutoff, 0);
    }
    if (mixes && Vorlin::av::layoutMask(source.layout) != 0 &&
        Vorlin::av::layoutMask(resampled_.layout) != 0) {
        const std::vector<double> matrix = mixingMatrix(source.layout, resampled_.layout);
        result = swr_set_matrix(context, matrix.data(), source.channels());
        if (result < 0) return result;
    }
    return swr_init(context);
}

void FormatConverter::open(const AudioSpec& source) {
    quantises_ = needsQuantiser(source);
    resampled_ = target_;
    if (quantises_) resampled_.format = AV_SAMPLE_FMT_DBL;
    const bool resamples = source.rate_hz != target_.rate_hz;
    int result = initialise(source, options_.use_soxr && resamples);
    if (result < 0 && options_.use_soxr && resamples) result = initialise(source, false);
    if (result < 0) {
        resampler_.reset();
        fail(result);
    }
    source_ = source;
    input_frames_ = 0;
    output_frames_ = 0;
}

// Cuts what goes beyond the length that the input's frames so far make, and lengthens nothing.
FramePtr FormatConverter::limitedToLength(FramePtr output) {
    const int64_t end = av_rescale_rnd(input_frames_, target_.rate_hz, source_.rate_hz, AV_ROUND_NEAR_INF);
    const int64_t left = std::max<int64_t>(end - output_frames_, 0);
    output->nb_samples = static_cast<int>(std::min<int64_t>(left, output->nb_samples));
    output_frames_ += output->nb_samples;
    return output->nb_samples > 0 ? std::move(output) : nullptr;
}

FramePtr FormatConverter::run(const AVFrame* input, int counted_frames) {
    const int input_frames = input != nullptr ? input->nb_samples : 0;
    input_frames_ += counted_frames;
    const int room = swr_get_out_samples(resampler_.get(), input_frames);
    if (room < 0) fail(room);
    if (room == 0) return nullptr;
    FramePtr output = makeFrame(resampled_, room);
    // The const qualifiers of the input planes differ between releases of libswresample.
    const auto** planes = input != nullptr ? const_cast<const uint8_t**>(input->extended_data) : nullptr;
    const int produced = swr_convert(resampler_.get(), output->extended_data, room, planes, input_frames);
    if (produced < 0) fail(produced);
    output->nb_samples = produced;
    output = limitedToLength(std::move(output));
    if (output != nullptr && quantises_) return quantiser_->quantise(*output);
    return output;
}

// Returns silence that drives the end of the sound out of the resampler. By itself, a resampler's flush may
// keep the last frame, or all of a very short sound.
FramePtr FormatConverter::silence() const {
    FramePtr frame = makeFrame(source_, source_.rate_hz / kSilencesPerSecond + kShortestSilence_frames);
    av_samples_set_silence(frame->extended_data, 0, frame->nb_samples, source_.channels(), source_.format);
    return frame;
}

FramePtr FormatConverter::convert(FramePtr frame) {
    const AudioSpec source = specOf(*frame);
    FramePtr rest;
    if (resampler_ != nullptr && !(source == source_)) rest = flush();
    if (resampler_ == nullptr && source == target_ && !needsQuantiser(source))
        return joined(std::move(rest), std::move(frame), target_);
    if (resampler_ == nullptr) open(source);
    return joined(std::move(rest), run(frame.get(), frame->nb_samples), target_);
}

FramePtr FormatConverter::flush() {
    if (resampler_ == nullptr) return nullptr;
    FramePtr rest;
    if (source_.rate_hz != target_.rate_hz) rest = run(silence().get(), 0);
    while (FramePtr piece = run(nullptr, 0)) rest = joined(std::move(rest), std::move(piece), target_);
    resampler_.reset();
    return rest;
}

}  // namespace sonivex_tool
