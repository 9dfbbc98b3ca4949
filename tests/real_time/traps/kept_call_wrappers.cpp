// The wrappers of the calls in kept_calls.h. The linker binds every call of a function NAME in the program's
// own objects to __wrap_NAME, and __real_NAME to the original. The calls inside libraries stay.
#include <pthread.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <functional>
#include <new>
#include <string>

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/audio_fifo.h>
#include <libavutil/frame.h>
#include <libavutil/opt.h>
}

#include "SonivexFilter.h"
#include "mixer.h"
#include "real_time/traps/kept_calls.h"
#include "vorlin/log.h"

using test::Kept;
using test::KeptPassage;

namespace {

// Makes the real call.
template <typename Function, typename... Arguments>
auto pass(Kept call, Function real, Arguments... arguments) {
    const KeptPassage passage(call);
    return real(arguments...);
}

}  // namespace

#define REAL(result, name, parameters) result __real_##name parameters
#define WRAP(result, name, parameters) \
    REAL(result, name, parameters);    \
    result __wrap_##name parameters;   \
    result __wrap_##name parameters

extern "C" {

WRAP(AVFrame*, av_frame_alloc, ()) {
    return pass(Kept::kFrameAlloc, __real_av_frame_alloc);
}

WRAP(AVFrame*, av_frame_clone, (const AVFrame* frame)) {
    return pass(Kept::kFrameClone, __real_av_frame_clone, frame);
}

WRAP(void, av_frame_free, (AVFrame * *frame)) {
    return pass(Kept::kFrameFree, __real_av_frame_free, frame);
}

WRAP(void, av_frame_unref, (AVFrame * frame)) {
    return pass(Kept::kFrameUnref, __real_av_frame_unref, frame);
}

WRAP(int, av_frame_get_buffer, (AVFrame * frame, int align)) {
    return pass(Kept::kFrameBuffer, __real_av_frame_get_buffer, frame, align);
}

WRAP(int, av_frame_copy_props, (AVFrame * to, const AVFrame* from)) {
    return pass(Kept::kFrameProperties, __real_av_frame_copy_props, to, from);
}

WRAP(void, av_frame_remove_side_data, (AVFrame * frame, AVFrameSideDataType type)) {
    return pass(Kept::kSideData, __real_av_frame_remove_side_data, frame, type);
}

WRAP(void, av_dict_free, (AVDictionary * *dictionary)) {
    return pass(Kept::kDictionary, __real_av_dict_free, dictionary);
}

WRAP(AVBufferRef*, av_buffer_alloc, (std::size_t bytes)) {
    return pass(Kept::kBufferAlloc, __real_av_buffer_alloc, bytes);
}

WRAP(void, av_buffer_unref, (AVBufferRef * *buffer)) {
    return pass(Kept::kBufferUnref, __real_av_buffer_unref, buffer);
}

WRAP(AVAudioFifo*, av_audio_fifo_alloc, (AVSampleFormat format, int channels, int frames)) {
    return pass(Kept::kFifoAlloc, __real_av_audio_fifo_alloc, format, channels, frames);
}

WRAP(int, av_audio_fifo_write, (AVAudioFifo * fifo, void** planes, int frames)) {
    return pass(Kept::kFifoWrite, __real_av_audio_fifo_write, fifo, planes, frames);
}

WRAP(int, av_buffersrc_add_frame, (AVFilterContext * source, AVFrame* frame)) {
    return pass(Kept::kGraphInput, __real_av_buffersrc_add_frame, source, frame);
}

WRAP(int, av_buffersink_get_frame, (AVFilterContext * sink, AVFrame* frame)) {
    return pass(Kept::kGraphOutput, __real_av_buffersink_get_frame, sink, frame);
}

WRAP(AVFilterGraph*, avfilter_graph_alloc, ()) {
    return pass(Kept::kGraphAlloc, __real_avfilter_graph_alloc);
}

WRAP(AVFilterContext*, avfilter_graph_alloc_filter,
     (AVFilterGraph * graph, const AVFilter* filter, const char* name)) {
    return pass(Kept::kGraphFilter, __real_avfilter_graph_alloc_filter, graph, filter, name);
}

WRAP(int, avfilter_init_str, (AVFilterContext * filter, const char* options)) {
    return pass(Kept::kGraphFilterInit, __real_avfilter_init_str, filter, options);
}

WRAP(int, avfilter_graph_create_filter,
     (AVFilterContext * *context, const AVFilter* filter, const char* name, const char* options, void* opaque,
      AVFilterGraph* graph)) {
    return pass(Kept::kGraphNewFilter, __real_avfilter_graph_create_filter, context, filter, name, options,
                opaque, graph);
}

WRAP(int, av_opt_set, (void* object, const char* name, const char* value, int flags)) {
    return pass(Kept::kGraphOption, __real_av_opt_set, object, name, value, flags);
}

WRAP(int, avfilter_link, (AVFilterContext * from, unsigned output, AVFilterContext* to, unsigned input)) {
    return pass(Kept::kGraphLink, __real_avfilter_link, from, output, to, input);
}

WRAP(int, avfilter_graph_config, (AVFilterGraph * graph, void* log_context)) {
    return pass(Kept::kGraphConfig, __real_avfilter_graph_config, graph, log_context);
}

WRAP(void, avfilter_graph_free, (AVFilterGraph * *graph)) {
    return pass(Kept::kGraphFree, __real_avfilter_graph_free, graph);
}

WRAP(void*, _Znam, (std::size_t bytes)) {
    return pass(Kept::kNewArray, __real__Znam, bytes);
}

WRAP(void, _ZdaPv, (void* memory)) {
    return pass(Kept::kDeleteArray, __real__ZdaPv, memory);
}

WRAP(void*, _Znwm, (std::size_t bytes)) {
    return pass(Kept::kNew, __real__Znwm, bytes);
}

WRAP(void*, _ZnwmRKSt9nothrow_t, (std::size_t bytes, const std::nothrow_t& nothrow)) {
    return pass(Kept::kNew, __real__ZnwmRKSt9nothrow_t, bytes, std::cref(nothrow));
}

WRAP(void, _ZdlPv, (void* memory)) {
    return pass(Kept::kDelete, __real__ZdlPv, memory);
}

WRAP(void, _ZdlPvm, (void* memory, std::size_t bytes)) {
    return pass(Kept::kDelete, __real__ZdlPvm, memory, bytes);
}

WRAP(void*, aem_CreateSurround, (int channels, int rate_hz, int type, int mode, int limiter)) {
    return pass(Kept::kCreateSurround, __real_aem_CreateSurround, channels, rate_hz, type, mode, limiter);
}

WRAP(void*, aem_CreateDialoguEnhance, (int channels, int rate_hz, double floor, double scale, double voice)) {
    return pass(Kept::kCreateDialogue, __real_aem_CreateDialoguEnhance, channels, rate_hz, floor, scale,
                voice);
}

WRAP(void*, aem_CreateNormalizer, (int channels, int rate_hz)) {
    return pass(Kept::kCreateNormalizer, __real_aem_CreateNormalizer, channels, rate_hz);
}

WRAP(int, _Z7mixprocP10MixerStatePKPKsPKfiiiPs,
     (MixerState * mixer, const std::int16_t* const* inputs, const float* gains, int gains_in_db,
      int input_count, int sample_count, std::int16_t* output)) {
    return pass(Kept::kMixer, __real__Z7mixprocP10MixerStatePKPKsPKfiiiPs, mixer, inputs, gains, gains_in_db,
                input_count, sample_count, output);
}

// A private member function of the filter.
#define DUMP_PCM_DATA                                                         \
    "_ZN6Vorlin13sonivexFilter11dumpPCMDataEPKsiiRKNSt7__cxx1112basic_string" \
    "IcSt11char_traitsIcESaIcEEEb"
void realDump(Vorlin::sonivexFilter* self, const short* pcm, int channels, int samples,
              const std::string& effect, bool is_input) __asm__("__real_" DUMP_PCM_DATA);
void wrapDump(Vorlin::sonivexFilter* self, const short* pcm, int channels, int samples,
              const std::string& effect, bool is_input) __asm__("__wrap_" DUMP_PCM_DATA);
void wrapDump(Vorlin::sonivexFilter* self, const short* pcm, int channels, int samples,
              const std::string& effect, bool is_input) {
    pass(Kept::kDump, realDump, self, pcm, channels, samples, std::cref(effect), is_input);
}

WRAP(int, pthread_mutex_lock, (pthread_mutex_t * mutex)) {
    return pass(Kept::kMutex, __real_pthread_mutex_lock, mutex);
}

WRAP(int, pthread_mutex_unlock, (pthread_mutex_t * mutex)) {
    return pass(Kept::kMutex, __real_pthread_mutex_unlock, mutex);
}

WRAP(int, clock_gettime, (clockid_t clock, timespec* time)) {
    return pass(Kept::kClock, __real_clock_gettime, clock, time);
}

WRAP(void, qf_msleep, (std::int64_t milliseconds)) {
    test::runBeforeSleep();
    return pass(Kept::kSleep, __real_qf_msleep, milliseconds);
}

// The framework's threshold, which decides whether a message is a call that allocates.
static int log_level = Vorlin::LOG_QUIET;

WRAP(void, _ZN6Vorlin11setLogLevelEi, (int level)) {
    log_level = level;
    __real__ZN6Vorlin11setLogLevelEi(level);
}

REAL(void, __log_print, (int level, const char* tag, const char* format, ...));
void __wrap___log_print(int level, const char* tag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
void __wrap___log_print(int level, const char* tag, const char* format, ...) {
    char message[1024];
    va_list arguments;
    va_start(arguments, format);
    (void)std::vsnprintf(message, sizeof message, format, arguments);
    va_end(arguments);
    if (level > log_level) {
        __real___log_print(level, tag, "%s", message);
    } else {
        const KeptPassage passage(Kept::kLog);
        __real___log_print(level, tag, "%s", message);
    }
}
}
