#include "failing_calls.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libavutil/opt.h>
}

#include <map>

namespace test {
namespace {

bool is_counting = false;
std::string failing_function;
int failing_number = 0;
std::map<std::string, int> calls_so_far;

bool isRefused(const char* function) {
    if (!is_counting) return false;
    const int number = ++calls_so_far[function];
    return function == failing_function && number == failing_number;
}

}  // namespace

FailingCalls::FailingCalls(const std::string& function, int number) {
    failing_function = function;
    failing_number = number;
    calls_so_far.clear();
}

FailingCalls::~FailingCalls() {
    failing_function.clear();
}

FailingCalls::Counting::Counting() {
    is_counting = true;
}

FailingCalls::Counting::~Counting() {
    is_counting = false;
}

int FailingCalls::calls(const std::string& function) const {
    return calls_so_far[function];
}

const std::vector<std::string>& FailingCalls::functions() {
    static const std::vector<std::string> names = {
        "avfilter_init_str",
        "avfilter_graph_create_filter",
        "avfilter_link",
        "avfilter_graph_config",
        "av_buffersrc_add_frame",
        "av_buffersink_get_frame",
        "av_frame_copy_props",
        "av_frame_get_buffer",
        "av_opt_set",
        "av_opt_set_q",
        "av_opt_set_int",
        "av_channel_layout_describe",
        "av_channel_layout_from_mask",
        "av_channel_layout_copy",
        "avfilter_get_by_name",
        "avfilter_graph_alloc",
        "avfilter_graph_alloc_filter",
        "av_frame_alloc",
        "av_buffer_alloc",
    };
    return names;
}

}  // namespace test

// Each wrapper returns what its function returns when it fails.
#define FAILING(type, failure, name, parameters, arguments)                  \
    type __real_##name parameters;                                           \
    type __wrap_##name parameters {                                          \
        return test::isRefused(#name) ? (failure) : __real_##name arguments; \
    }

extern "C" {
FAILING(int, AVERROR(EINVAL), avfilter_init_str, (AVFilterContext * a, const char* b), (a, b))
FAILING(int, AVERROR(EINVAL), avfilter_graph_create_filter,
        (AVFilterContext * *a, const AVFilter* b, const char* c, const char* d, void* e, AVFilterGraph* f),
        (a, b, c, d, e, f))
FAILING(int, AVERROR(EINVAL), avfilter_link,
        (AVFilterContext * a, unsigned b, AVFilterContext* c, unsigned d), (a, b, c, d))
FAILING(int, AVERROR(EINVAL), avfilter_graph_config, (AVFilterGraph * a, void* b), (a, b))
FAILING(int, AVERROR(EINVAL), av_buffersrc_add_frame, (AVFilterContext * a, AVFrame* b), (a, b))
FAILING(int, AVERROR(EINVAL), av_buffersink_get_frame, (AVFilterContext * a, AVFrame* b), (a, b))
FAILING(int, AVERROR(EINVAL), av_frame_copy_props, (AVFrame * a, const AVFrame* b), (a, b))
FAILING(int, AVERROR(EINVAL), av_frame_get_buffer, (AVFrame * a, int b), (a, b))
FAILING(int, AVERROR(EINVAL), av_opt_set, (void* a, const char* b, const char* c, int d), (a, b, c, d))
FAILING(int, AVERROR(EINVAL), av_opt_set_q, (void* a, const char* b, AVRational c, int d), (a, b, c, d))
FAILING(int, AVERROR(EINVAL), av_opt_set_int, (void* a, const char* b, int64_t c, int d), (a, b, c, d))
FAILING(int, AVERROR(EINVAL), av_channel_layout_describe, (const AVChannelLayout* a, char* b, size_t c),
        (a, b, c))
FAILING(int, AVERROR(EINVAL), av_channel_layout_from_mask, (AVChannelLayout * a, uint64_t b), (a, b))
FAILING(int, AVERROR(EINVAL), av_channel_layout_copy, (AVChannelLayout * a, const AVChannelLayout* b), (a, b))
FAILING(const AVFilter*, nullptr, avfilter_get_by_name, (const char* a), (a))
FAILING(AVFilterGraph*, nullptr, avfilter_graph_alloc, (), ())
FAILING(AVFilterContext*, nullptr, avfilter_graph_alloc_filter,
        (AVFilterGraph * a, const AVFilter* b, const char* c), (a, b, c))
FAILING(AVFrame*, nullptr, av_frame_alloc, (), ())
FAILING(AVBufferRef*, nullptr, av_buffer_alloc, (size_t a), (a))
}

#undef FAILING
