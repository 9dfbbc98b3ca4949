#include "real_time/traps/kept_calls.h"

#include <array>
#include <atomic>

namespace test {
namespace {

constexpr auto kCalls = static_cast<std::size_t>(Kept::kCount);

std::array<std::atomic<bool>, kCalls> is_on_list{};
std::array<std::atomic<int>, kCalls> counts{};
std::atomic<void (*)()> before_sleep = nullptr;
thread_local bool is_nothing_kept_here = false;

std::size_t indexOf(Kept call) {
    return static_cast<std::size_t>(call);
}

}  // namespace

KeptCalls::KeptCalls(std::span<const Kept> list) {
    for (auto& count : counts) count = 0;
    add(list);
}

KeptCalls::~KeptCalls() {
    for (auto& entry : is_on_list) entry = false;
    beforeSleep(nullptr);
}

void KeptCalls::add(std::span<const Kept> list) {
    for (const Kept call : list) is_on_list[indexOf(call)] = true;
}

void KeptCalls::remove(Kept call) {
    is_on_list[indexOf(call)] = false;
}

void KeptCalls::beforeSleep(void (*function)()) {
    before_sleep = function;
}

void runBeforeSleep() {
    if (void (*const function)() = before_sleep; function != nullptr) function();
}

int KeptCalls::count(Kept call) const {
    return counts[indexOf(call)];
}

NothingKeptHere::NothingKeptHere() {
    is_nothing_kept_here = true;
}

NothingKeptHere::~NothingKeptHere() {
    is_nothing_kept_here = false;
}

std::string_view nameOf(Kept call) {
    static constexpr std::array<std::string_view, kCalls> kNames = {
        "av_frame_alloc",
        "av_frame_clone",
        "av_frame_free",
        "av_frame_unref",
        "av_frame_get_buffer",
        "av_frame_copy_props",
        "av_frame_remove_side_data",
        "av_dict_free",
        "av_buffer_alloc",
        "av_buffer_unref",
        "av_audio_fifo_alloc",
        "av_audio_fifo_write",
        "av_buffersrc_add_frame",
        "av_buffersink_get_frame",
        "avfilter_graph_alloc",
        "avfilter_graph_alloc_filter",
        "avfilter_init_str",
        "avfilter_graph_create_filter",
        "av_opt_set",
        "avfilter_link",
        "avfilter_graph_config",
        "avfilter_graph_free",
        "operator new[]",
        "operator delete[]",
        "operator new",
        "operator delete",
        "aem_CreateSurround",
        "aem_CreateDialoguEnhance",
        "aem_CreateNormalizer",
        "mixproc",
        "dumpPCMData",
        "__log_print",
        "pthread_mutex_lock",
        "clock_gettime",
        "qf_msleep",
    };
    return kNames[indexOf(call)];
}

KeptPassage::KeptPassage(Kept call) {
    if (!RealTimeSection::isTrapping()) return;
    ++counts[indexOf(call)];
    if (is_on_list[indexOf(call)] && !is_nothing_kept_here) pause_.emplace();
}

}  // namespace test
