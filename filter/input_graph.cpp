// The input graph converts a frame of any sample format to interleaved signed 16-bit, in the default layout
// of its channel count and at its own sample rate:
//   abuffer ("src") -> aformat -> abuffersink

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libavutil/opt.h>
}

#include <cinttypes>
#include <cstdio>

#include "SonivexFilter.h"
#include "frame_properties.h"
#include "vorlin/av_compat.h"
#include "vorlin/log.h"
#include "vorlin/sample_format.h"

namespace Vorlin {

namespace {

// Returns the layout that `info` describes. The channels of an unspecified or custom order are taken by
// position, as those of the default layout.
AVChannelLayout layoutOf(const IQFFrame::audioInfo& info) {
    AVChannelLayout layout{};
    if (info.channel_layout == 0 || av_channel_layout_from_mask(&layout, info.channel_layout) < 0) {
        av_channel_layout_default(&layout, info.channels);
    }
    return layout;
}

// An effect's handle is made for a channel count and works on the loudspeakers of its default layout.
bool isAsEffectsTakeIt(const AVFrame* frame, int channels) {
    return frame->format == AV_SAMPLE_FMT_S16 && frame->ch_layout.nb_channels == channels &&
           av::layoutMask(frame->ch_layout) == av::defaultLayoutMask(channels);
}

}  // namespace

// Uses `info` as the description of the stream from now on. If there was an input graph since the last
// flush, a lost frame has freed it, and the player may have changed the stream without a flush. In that case
// the format to deliver changes too. Otherwise the first frame of the stream has settled that format.
void sonivexFilter::takeOnStream(const IQFFrame::audioInfo& info) {
    if (mHasStream && info.format != mSource.format) {
        mSrcFormat = info.format;
        freeOutputGraph();
    }
    mSource = info;
    mHasStream = true;
}

int sonivexFilter::initAVFilter() {
    mFilterGraph = avfilter_graph_alloc();
    if (mFilterGraph == nullptr) return AVERROR(ENOMEM);
    // This must precede the first filter, or the graph starts one thread per core.
    mFilterGraph->nb_threads = 1;

    int error = createSrcBufferFilter();
    if (error < 0) {
        __log_print(LOG_ERROR, kFilterName, "Failed to create source buffer filter: %d\n", error);
        freeInputGraph();
        return error;
    }
    mAbuffersink_ctx = createFilter("abuffersink", nullptr);
    if (mAbuffersink_ctx == nullptr) {
        __log_print(LOG_ERROR, kFilterName, "Failed to create buffer sink filter\n");
        freeInputGraph();
        return AVERROR(EINVAL);
    }
    char args[1024];
    std::snprintf(args, sizeof(args), "sample_fmts=%s:sample_rates=%d:channel_layouts=0x%" PRIx64, "s16",
                  mSource.sample_rate, av::defaultLayoutMask(mChannels));
    AVFilterContext* last = mAbuffer_ctx;
    error = addFilter(&last, "aformat", args);
    if (error < 0) {
        __log_print(LOG_ERROR, kFilterName, "Failed to add aformat filter: %d\n", error);
        freeInputGraph();
        return error;
    }
    error = avfilter_link(last, 0, mAbuffersink_ctx, 0);
    if (error < 0) {
        __log_print(LOG_ERROR, kFilterName, "Failed to link filters: %d\n", error);
        freeInputGraph();
        return error;
    }
    error = avfilter_graph_config(mFilterGraph, nullptr);
    if (error < 0) {
        __log_print(LOG_ERROR, kFilterName, "Failed to configure filter graph: %d\n", error);
        freeInputGraph();
        return error;
    }
    return 0;
}

int sonivexFilter::createSrcBufferFilter() {
    const AVFilter* filter = avfilter_get_by_name("abuffer");
    mAbuffer_ctx = avfilter_graph_alloc_filter(mFilterGraph, filter, "src");
    if (mAbuffer_ctx == nullptr) return AVERROR(EINVAL);

    char layout_text[64] = "";
    AVChannelLayout layout = layoutOf(mSource);
    av_channel_layout_describe(&layout, layout_text, sizeof(layout_text));
    av_channel_layout_uninit(&layout);
    av_opt_set(mAbuffer_ctx, "channel_layout", layout_text, AV_OPT_SEARCH_CHILDREN);
    av_opt_set(mAbuffer_ctx, "sample_fmt", qf_get_sample_fmt_name(mSource.format), AV_OPT_SEARCH_CHILDREN);
    av_opt_set_q(mAbuffer_ctx, "time_base", AVRational{1, 1'000'000}, AV_OPT_SEARCH_CHILDREN);
    av_opt_set_int(mAbuffer_ctx, "sample_rate", mSource.sample_rate, AV_OPT_SEARCH_CHILDREN);

    // If an option could not be set, its value is missing and avfilter_init_str refuses the filter.
    const int error = avfilter_init_str(mAbuffer_ctx, nullptr);
    if (error < 0) __log_print(LOG_ERROR, kFilterName, "Could not initialize the abuffer filter.\n");
    return error;
}

AVFilterContext* sonivexFilter::createFilter(const char* name, const char* args) {
    const AVFilter* filter = avfilter_get_by_name(name);
    if (filter == nullptr) __log_print(LOG_ERROR, kFilterName, "sonivex create filter %s failed", name);
    AVFilterContext* context = avfilter_graph_alloc_filter(mFilterGraph, filter, name);
    if (context == nullptr) return nullptr;
    if (avfilter_init_str(context, args) < 0) {
        __log_print(LOG_ERROR, kFilterName, "Could not initialize the %s filter.\n",
                    args != nullptr ? args : "(null)");
        avfilter_free(context);
        return nullptr;
    }
    return context;
}

int sonivexFilter::addFilter(AVFilterContext** last, const char* name, const char* args) {
    AVFilterContext* context = createFilter(name, args);
    if (context == nullptr) {
        __log_print(LOG_INFO, kFilterName, "%s filter create fail\n", name);
        return AVERROR(EINVAL);
    }
    const int error = avfilter_link(*last, 0, context, 0);
    if (error < 0) {
        __log_print(LOG_WARNING, kFilterName, "%s filter link fail\n", name);
        return AVERROR(EINVAL);
    }
    *last = context;
    return error;
}

// Converts the samples of `frame` in place and leaves its other fields unchanged. A graph that refuses the
// frame holds nothing of it and stays. A graph that takes the frame and does not give it back is freed.
// @return 0; AVERROR(EAGAIN) or AVERROR_EOF if the graph has no frame to give; or another negative AVERROR.
// Every negative result is logged.
int sonivexFilter::convertToS16(const IQFFrame::audioInfo& info, AVFrame* frame) {
    FrameProperties properties;
    int error = properties.save(frame);
    if (error >= 0) {
        AVChannelLayout layout = layoutOf(info);
        error = av::setFrameLayout(frame, layout);
        av_channel_layout_uninit(&layout);
    }
    frame->pts = AV_NOPTS_VALUE;  // the graph does not use it
    if (error >= 0) error = av_buffersrc_add_frame(mAbuffer_ctx, frame);
    if (error < 0) {
        __log_print(LOG_ERROR, kFilterName, "av_buffersrc_add_frame error %d\n", error);
        return error;
    }
    // The graph copies a frame that is not reference-counted instead of taking it, so the frame still holds
    // its samples. They go now, before the sink overwrites the fields.
    av_frame_unref(frame);
    error = av_buffersink_get_frame(mAbuffersink_ctx, frame);
    const bool has_nothing_yet = error == AVERROR(EAGAIN) || error == AVERROR_EOF;
    // When memory runs out, libavfilter drops the options of a filter without reporting an error.
    if (error >= 0 && !isAsEffectsTakeIt(frame, info.channels)) error = AVERROR(EINVAL);
    if (error >= 0) error = properties.restore(frame);
    if (error >= 0) return error;

    if (has_nothing_yet) {
        __log_print(LOG_DEBUG, kFilterName, "sonivex av_buffersink_get_frame error %d\n", error);
    } else {
        __log_print(LOG_ERROR, kFilterName, "av_buffersink_get_frame error %d\n", error);
    }
    // Samples left in the graph would come out with the next frame, and a graph without its options never
    // works.
    freeInputGraph();
    return error;
}

void sonivexFilter::freeInputGraph() {
    avfilter_graph_free(&mFilterGraph);
    mAbuffer_ctx = nullptr;
    mAbuffersink_ctx = nullptr;
}

}  // namespace Vorlin
