#include "graph_faults.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include <string_view>

namespace test {
namespace {

thread_local GraphFaults* graph_faults_in_force = nullptr;

bool isDue(int GraphFaults::*countdown) {
    if (graph_faults_in_force == nullptr || graph_faults_in_force->*countdown == 0) return false;
    --(graph_faults_in_force->*countdown);
    return true;
}

}  // namespace

WithGraphFaults::WithGraphFaults() {
    graph_faults_in_force = &faults_;
}

WithGraphFaults::~WithGraphFaults() {
    graph_faults_in_force = nullptr;
}

}  // namespace test

extern "C" {

int __real_avfilter_init_str(AVFilterContext* filter, const char* args);
int __real_avfilter_graph_create_filter(AVFilterContext** context, const AVFilter* filter, const char* name,
                                        const char* args, void* opaque, AVFilterGraph* graph);
int __real_avfilter_graph_config(AVFilterGraph* graph, void* log_context);
int __real_av_buffersrc_add_frame(AVFilterContext* source, AVFrame* frame);
int __real_av_buffersink_get_frame(AVFilterContext* sink, AVFrame* frame);

// The input graph allocates a filter first and initialises it here. The output graph does both in one call.
int __wrap_avfilter_init_str(AVFilterContext* filter, const char* args) {
    const bool is_format = std::string_view(filter->filter->name) == "aformat";
    const bool is_lost = is_format && test::isDue(&test::GraphFaults::input_formats_to_lose);
    return __real_avfilter_init_str(filter, is_lost ? nullptr : args);
}

int __wrap_avfilter_graph_create_filter(AVFilterContext** context, const AVFilter* filter, const char* name,
                                        const char* args, void* opaque, AVFilterGraph* graph) {
    const bool is_format = std::string_view(filter->name) == "aformat";
    const bool is_lost = is_format && test::isDue(&test::GraphFaults::output_formats_to_lose);
    return __real_avfilter_graph_create_filter(context, filter, name, is_lost ? nullptr : args, opaque,
                                               graph);
}

int __wrap_avfilter_graph_config(AVFilterGraph* graph, void* log_context) {
    const bool is_output = avfilter_graph_get_filter(graph, "out_src") != nullptr;
    if (test::isDue(is_output ? &test::GraphFaults::output_configs_to_fail
                              : &test::GraphFaults::input_configs_to_fail)) {
        return test::graph_faults_in_force->error;
    }
    return __real_avfilter_graph_config(graph, log_context);
}

int __wrap_av_buffersrc_add_frame(AVFilterContext* source, AVFrame* frame) {
    const bool is_output = std::string_view(source->name) == "out_src";
    if (test::isDue(is_output ? &test::GraphFaults::output_pushes_to_fail
                              : &test::GraphFaults::input_pushes_to_fail)) {
        return test::graph_faults_in_force->error;
    }
    return __real_av_buffersrc_add_frame(source, frame);
}

int __wrap_av_buffersink_get_frame(AVFilterContext* sink, AVFrame* frame) {
    const bool is_output = std::string_view(sink->name) == "out_sink";
    if (test::isDue(is_output ? &test::GraphFaults::output_reads_to_fail
                              : &test::GraphFaults::input_reads_to_fail)) {
        return test::graph_faults_in_force->error;
    }
    return __real_av_buffersink_get_frame(sink, frame);
}
}
