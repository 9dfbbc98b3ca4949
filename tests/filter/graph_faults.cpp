#include "graph_faults.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
}

#include <string_view>

namespace test {
namespace {

thread_local GraphFaults* graphFaultsInForce = nullptr;

bool isDue(int GraphFaults::*countdown) {
    if (graphFaultsInForce == nullptr || graphFaultsInForce->*countdown == 0) return false;
    --(graphFaultsInForce->*countdown);
    return true;
}

}  // namespace

WithGraphFaults::WithGraphFaults() {
    graphFaultsInForce = &mFaults;
}

WithGraphFaults::~WithGraphFaults() {
    graphFaultsInForce = nullptr;
}

}  // namespace test

extern "C" {

int __real_avfilter_init_str(AVFilterContext* filter, const char* args);
int __real_avfilter_graph_create_filter(AVFilterContext** context, const AVFilter* filter, const char* name,
                                        const char* args, void* opaque, AVFilterGraph* graph);
int __real_av_buffersink_get_frame(AVFilterContext* sink, AVFrame* frame);

// The input graph makes its filters in two steps, the output graph in one.
int __wrap_avfilter_init_str(AVFilterContext* filter, const char* args) {
    const bool isFormat = std::string_view(filter->filter->name) == "aformat";
    const bool isLost = isFormat && test::isDue(&test::GraphFaults::inputFormatsToLose);
    return __real_avfilter_init_str(filter, isLost ? nullptr : args);
}

int __wrap_avfilter_graph_create_filter(AVFilterContext** context, const AVFilter* filter, const char* name,
                                        const char* args, void* opaque, AVFilterGraph* graph) {
    const bool isFormat = std::string_view(filter->name) == "aformat";
    const bool isLost = isFormat && test::isDue(&test::GraphFaults::outputFormatsToLose);
    return __real_avfilter_graph_create_filter(context, filter, name, isLost ? nullptr : args, opaque, graph);
}

int __wrap_av_buffersink_get_frame(AVFilterContext* sink, AVFrame* frame) {
    const bool isInput = std::string_view(sink->name) == "abuffersink";
    if (isInput && test::isDue(&test::GraphFaults::inputReadsToFail)) {
        return test::graphFaultsInForce->readError;
    }
    return __real_av_buffersink_get_frame(sink, frame);
}
}
