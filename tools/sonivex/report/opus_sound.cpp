#include "opus_sound.h"

#include <algorithm>

#include "av_codec_compat.h"
#include "failure.h"

namespace sonivex_tool {
namespace {

constexpr int kPiece_frames = 4096;

AudioSpec stereoSpec(AVSampleFormat format) {
    return {.format = format, .rate_hz = kPageRate_hz, .layout = defaultLayout(2)};
}

// FFmpeg's own encoder of Opus is experimental, and serves where libopus is missing.
const AVCodec* opusEncoder() {
    const AVCodec* codec = avcodec_find_encoder_by_name("libopus");
    return codec != nullptr ? codec : avcodec_find_encoder(AV_CODEC_ID_OPUS);
}

AVSampleFormat formatOf(const AVCodec& codec) {
    const auto formats = av::codecSampleFormats(codec);
    const bool takes_floats =
        formats.empty() || std::find(formats.begin(), formats.end(), AV_SAMPLE_FMT_FLT) != formats.end();
    return takes_floats ? AV_SAMPLE_FMT_FLT : formats.front();
}

const AVCodec& requiredEncoder() {
    const AVCodec* codec = opusEncoder();
    if (codec == nullptr)
        throw Failure(ExitCode::OutputFormat, "this build of FFmpeg has no encoder of Opus");
    return *codec;
}

void check(int result) {
    if (result == AVERROR(ENOMEM)) throw std::bad_alloc();
    if (result < 0) throw Failure(ExitCode::OutputFormat, "cannot encode as Opus: " + errorText(result));
}

}  // namespace

bool hasOpusEncoder() {
    return opusEncoder() != nullptr && av_guess_format("ogg", nullptr, nullptr) != nullptr;
}

void OpusSound::Closer::operator()(AVFormatContext* muxer) const {
    if (muxer->pb != nullptr) {
        uint8_t* bytes = nullptr;
        avio_close_dyn_buf(muxer->pb, &bytes);
        av_free(bytes);
    }
    avformat_free_context(muxer);
}

OpusSound::OpusSound(int rate_bps) : converter_(stereoSpec(formatOf(requiredEncoder()))) {
    AVFormatContext* muxer = nullptr;
    check(avformat_alloc_output_context2(&muxer, nullptr, "ogg", nullptr));
    muxer_.reset(muxer);
    // Otherwise the file would have a number at random.
    muxer->flags |= AVFMT_FLAG_BITEXACT;
    EncoderPlan plan;
    plan.muxer = muxer->oformat;
    plan.codec = &requiredEncoder();
    plan.spec = converter_.target();
    plan.bit_rate = rate_bps;
    // Opus spends far more on tones where it may, and the page would outgrow its limit.
    plan.holds_bit_rate = true;
    const bool global_header = (muxer->oformat->flags & AVFMT_GLOBALHEADER) != 0;
    encoder_ =
        std::make_unique<AudioEncoder>(plan, global_header, [this](AVPacket& packet) { write(packet); });
    AVStream* stream = allocated(avformat_new_stream(muxer, nullptr));
    check(avcodec_parameters_from_context(stream->codecpar, &encoder_->context()));
    stream->time_base = {1, kPageRate_hz};
    check(avio_open_dyn_buf(&muxer->pb));
    check(avformat_write_header(muxer, nullptr));
}

void OpusSound::write(AVPacket& packet) {
    av_packet_rescale_ts(&packet, {1, kPageRate_hz}, muxer_->streams[0]->time_base);
    packet.stream_index = 0;
    check(av_write_frame(muxer_.get(), &packet));
}

void OpusSound::add(std::span<const float> samples) {
    std::size_t frames = samples.size() / 2;
    const float* from = samples.data();
    while (frames > 0) {
        const auto piece = static_cast<int>(std::min<std::size_t>(frames, kPiece_frames));
        FramePtr frame = makeFrame(stereoSpec(AV_SAMPLE_FMT_FLT), piece);
        std::copy_n(from, 2 * piece, reinterpret_cast<float*>(frame->extended_data[0]));
        if (const FramePtr converted = converter_.convert(std::move(frame))) encoder_->write(*converted);
        from += static_cast<std::ptrdiff_t>(2) * piece;
        frames -= static_cast<std::size_t>(piece);
    }
}

std::string OpusSound::finish() {
    encoder_->finish();
    check(av_write_trailer(muxer_.get()));
    uint8_t* bytes = nullptr;
    const int size = avio_close_dyn_buf(muxer_->pb, &bytes);
    muxer_->pb = nullptr;
    std::string file(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(size));
    av_free(bytes);
    return file;
}

}  // namespace sonivex_tool
