// Puts an effect's block back into the player's frame. The output graph converts interleaved signed 16-bit to
// the player's own sample format:
//   abuffer ("out_src") -> aformat ("out_aformat") -> abuffersink ("out_sink")
// If the conversion fails for any reason, the player gets its audio as signed 16-bit instead.

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/buffer.h>
#include <libavutil/frame.h>
}

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstring>

#include "SonivexFilter.h"
#include "frame_checks.h"
#include "vorlin/av_compat.h"
#include "vorlin/log.h"
#include "vorlin/owned_av_frame.h"
#include "vorlin/sample_format.h"

namespace Vorlin {

namespace {

std::size_t blockBytes(int channels, int frames) {
    return static_cast<std::size_t>(channels) * static_cast<std::size_t>(frames) * sizeof(short);
}

// Returns a frame with a copy of `block`, or null if there is no memory for it, which is logged.
OwnedAVFrame makeS16Frame(const short* block, int channels, int sample_rate_hz, int frames) {
    OwnedAVFrame frame(av_frame_alloc());
    if (!frame) {
        __log_print(LOG_WARNING, kFilterName, "sonivex: av_frame_alloc failed, fallback to S16");
        return nullptr;
    }
    frame->format = AV_SAMPLE_FMT_S16;
    av::setFrameDefaultLayout(frame.get(), channels);
    frame->sample_rate = sample_rate_hz;
    frame->nb_samples = frames;
    if (const int error = av_frame_get_buffer(frame.get(), 0); error < 0) {
        __log_print(LOG_WARNING, kFilterName, "sonivex: av_frame_get_buffer failed (ret=%d), fallback to S16",
                    error);
        return nullptr;
    }
    std::memcpy(frame->data[0], block, blockBytes(channels, frames));
    return frame;
}

// Moves the samples of `from` to `to`. The other fields of `to` stay as they are.
void takeBuffers(AVFrame* to, AVFrame* from, int channels) {
    for (int i = 0; i < AV_NUM_DATA_POINTERS; ++i) {
        av_buffer_unref(&to->buf[i]);
        to->buf[i] = from->buf[i];
        from->buf[i] = nullptr;
        to->data[i] = from->data[i];
        to->linesize[i] = from->linesize[i];
    }
    if (from->extended_data == from->data) {
        to->extended_data = to->data;
    } else {
        std::copy_n(from->extended_data, std::min(channels, AV_NUM_DATA_POINTERS), to->extended_data);
    }
}

// Delivers `block` as signed 16-bit, in a buffer that no other frame shares. @return 0 or a negative AVERROR.
int putBackAsS16(IQFFrame::audioInfo& info, AVFrame* frame, const short* block, int channels, int frames) {
    if (const int error = av::setFrameDefaultLayout(frame, channels); error < 0) {
        __log_print(LOG_ERROR, kFilterName, "sonivex: layout of %d channels failed, frame lost", channels);
        return error;
    }
    const std::size_t bytes = blockBytes(channels, frames);
    if (channels != info.channels || !canWriteFirstPlane(frame, bytes)) {
        AVBufferRef* buffer = av_buffer_alloc(bytes);
        if (buffer == nullptr) {
            __log_print(LOG_ERROR, kFilterName, "sonivex: av_buffer_alloc failed, frame lost");
            return AVERROR(ENOMEM);
        }
        av_buffer_unref(&frame->buf[0]);
        frame->buf[0] = buffer;
        frame->data[0] = buffer->data;
        frame->extended_data[0] = buffer->data;
        frame->linesize[0] = static_cast<int>(bytes);
    }
    std::memcpy(frame->extended_data[0], block, bytes);
    info.channels = channels;
    info.channel_layout = av::defaultLayoutMask(channels);
    info.format = frame->format;
    info.nb_samples = frame->nb_samples;
    return 0;
}

}  // namespace

int sonivexFilter::putBack(IQFFrame::audioInfo& info, AVFrame* frame, const short* block, int channels,
                           int frames) {
    const bool is_players_format_s16 = mSrcFormat == -1 || mSrcFormat == AV_SAMPLE_FMT_S16;
    if (!is_players_format_s16 && putBackInPlayersFormat(info, frame, block, channels, frames)) return 0;
    return putBackAsS16(info, frame, block, channels, frames);
}

// @return false, with the frame as it was, if the block has to be delivered as signed 16-bit.
bool sonivexFilter::putBackInPlayersFormat(IQFFrame::audioInfo& info, AVFrame* frame, const short* block,
                                           int channels, int frames) {
    if (!prepareOutputGraph(channels, frame->sample_rate)) return false;
    const OwnedAVFrame in = makeS16Frame(block, channels, frame->sample_rate, frames);
    if (!in) return false;
    const OwnedAVFrame out(av_frame_alloc());
    int error = out ? runOutputGraph(in.get(), out.get()) : AVERROR(ENOMEM);
    // When memory runs out, libavfilter drops the options of a filter without reporting an error. The result
    // would then have too few planes for the player's format, or planes that are too short.
    if (error >= 0 && (out->format != mSrcFormat || out->ch_layout.nb_channels != channels)) {
        error = AVERROR(EINVAL);
    }
    if (error >= 0) error = av::setFrameDefaultLayout(frame, channels);
    if (error < 0) {
        __log_print(LOG_WARNING, kFilterName,
                    "sonivex: output format conversion failed (ret=%d), fallback to S16", error);
        // Samples left in the graph would come out with a later frame and delay all that follow. A graph
        // without its options never works.
        freeOutputGraph();
        return false;
    }
    takeBuffers(frame, out.get(), channels);
    frame->format = mSrcFormat;
    frame->nb_samples = out->nb_samples;
    info.format = mSrcFormat;
    info.channels = channels;
    info.channel_layout = av::defaultLayoutMask(channels);
    info.nb_samples = frame->nb_samples;
    return true;
}

bool sonivexFilter::prepareOutputGraph(int channels, int sampleRate) {
    if (mOutFilterGraph != nullptr && (mOutChannels != channels || mOutSampleRate != sampleRate))
        freeOutputGraph();
    if (mOutFilterGraph == nullptr) initOutputAVFilter(channels, sampleRate);
    if (mOutFilterGraph == nullptr) return false;
    mOutChannels = channels;
    mOutSampleRate = sampleRate;
    return true;
}

int sonivexFilter::runOutputGraph(AVFrame* in, AVFrame* out) {
    const int error = av_buffersrc_add_frame(mOutAbuffer_ctx, in);
    return error < 0 ? error : av_buffersink_get_frame(mOutAbuffersink_ctx, out);
}

int sonivexFilter::initOutputAVFilter(int channels, int sampleRate) {
    if (mSrcFormat == -1 || mSrcFormat == AV_SAMPLE_FMT_S16) return 0;
    freeOutputGraph();
    const AVFilter* source = avfilter_get_by_name("abuffer");
    const AVFilter* sink = avfilter_get_by_name("abuffersink");
    const AVFilter* format = avfilter_get_by_name("aformat");
    mOutFilterGraph = avfilter_graph_alloc();
    if (mOutFilterGraph == nullptr) return -1;
    mOutFilterGraph->nb_threads = 1;  // no threads of its own, as in the input graph

    const uint64_t layout = av::defaultLayoutMask(channels);
    char args[256];
    std::snprintf(args, sizeof(args), "time_base=1/%d:sample_rate=%d:sample_fmt=%s:channel_layout=0x%" PRIx64,
                  sampleRate, sampleRate, "s16", layout);
    int error =
        avfilter_graph_create_filter(&mOutAbuffer_ctx, source, "out_src", args, nullptr, mOutFilterGraph);
    if (error >= 0) {
        error = avfilter_graph_create_filter(&mOutAbuffersink_ctx, sink, "out_sink", nullptr, nullptr,
                                             mOutFilterGraph);
    }
    const char* format_name = qf_get_sample_fmt_name(mSrcFormat);
    if (error >= 0 && format_name == nullptr) error = AVERROR(EINVAL);
    AVFilterContext* aformat = nullptr;
    if (error >= 0) {
        std::snprintf(args, sizeof(args), "sample_fmts=%s:sample_rates=%d:channel_layouts=0x%" PRIx64,
                      format_name, sampleRate, layout);
        error = avfilter_graph_create_filter(&aformat, format, "out_aformat", args, nullptr, mOutFilterGraph);
    }
    if (error >= 0) error = avfilter_link(mOutAbuffer_ctx, 0, aformat, 0);
    if (error >= 0) error = avfilter_link(aformat, 0, mOutAbuffersink_ctx, 0);
    if (error >= 0) error = avfilter_graph_config(mOutFilterGraph, nullptr);
    if (error < 0) {
        freeOutputGraph();
        return error;
    }
    __log_print(LOG_INFO, kFilterName,
                "sonivex: output filter graph initialized. S16 -> %s, channels=%d, sample_rate=%d",
                format_name, channels, sampleRate);
    return 0;
}

void sonivexFilter::freeOutputGraph() {
    avfilter_graph_free(&mOutFilterGraph);
    mOutAbuffer_ctx = nullptr;
    mOutAbuffersink_ctx = nullptr;
}

}  // namespace Vorlin
