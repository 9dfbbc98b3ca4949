// The calls that the filter and the framework make on the way of a frame although they allocate, lock, wait
// or call the system. docs/real-time.md lists them with the reason. The test program wraps each of them: the
// traps let it pass while it is on the list in force, and only then.
#pragma once

#include <cstddef>
#include <initializer_list>
#include <optional>
#include <span>
#include <string_view>

#include "real_time/traps/real_time_section.h"

namespace test {

/** A call that can be on a list. */
enum class Kept : std::size_t {
    kFrameAlloc,        // av_frame_alloc
    kFrameClone,        // av_frame_clone
    kFrameFree,         // av_frame_free
    kFrameUnref,        // av_frame_unref
    kFrameBuffer,       // av_frame_get_buffer
    kFrameProperties,   // av_frame_copy_props
    kSideData,          // av_frame_remove_side_data
    kDictionary,        // av_dict_free
    kBufferAlloc,       // av_buffer_alloc
    kBufferUnref,       // av_buffer_unref
    kFifoAlloc,         // av_audio_fifo_alloc
    kFifoWrite,         // av_audio_fifo_write
    kGraphInput,        // av_buffersrc_add_frame
    kGraphOutput,       // av_buffersink_get_frame
    kGraphAlloc,        // avfilter_graph_alloc
    kGraphFilter,       // avfilter_graph_alloc_filter
    kGraphFilterInit,   // avfilter_init_str
    kGraphNewFilter,    // avfilter_graph_create_filter
    kGraphOption,       // av_opt_set
    kGraphLink,         // avfilter_link
    kGraphConfig,       // avfilter_graph_config
    kGraphFree,         // avfilter_graph_free
    kNewArray,          // operator new[]
    kDeleteArray,       // operator delete[]
    kNew,               // operator new
    kDelete,            // operator delete
    kCreateSurround,    // aem_CreateSurround
    kCreateDialogue,    // aem_CreateDialoguEnhance
    kCreateNormalizer,  // aem_CreateNormalizer
    kMixer,             // mixproc, in aem_ProcessNormalizer
    kDump,              // sonivexFilter::dumpPCMData
    kLog,               // __log_print with a level that the threshold lets through
    kMutex,             // pthread_mutex_lock, pthread_mutex_unlock
    kClock,             // clock_gettime of a thread's clock
    kSleep,             // qf_msleep
    kCount
};

/** The list in force during its lifetime, for all threads. Only one object may exist at a time. */
class KeptCalls {
  public:
    KeptCalls(std::initializer_list<Kept> list) : KeptCalls(std::span(list)) {}
    explicit KeptCalls(std::span<const Kept> list);
    ~KeptCalls();
    KeptCalls(const KeptCalls&) = delete;
    KeptCalls& operator=(const KeptCalls&) = delete;

    /** Puts further calls on the list. */
    void add(std::span<const Kept> list);
    /** Takes a call off the list. */
    void remove(Kept call);
    /** Has the wrapper of qf_msleep call a function before it sleeps, on the thread that sleeps; null: none.
     */
    static void beforeSleep(void (*function)());

    /** Returns how often the call was made in sections since the list came into force. */
    int count(Kept call) const;
};

/** Takes every call off the list for the calling thread during its lifetime. */
class NothingKeptHere {
  public:
    NothingKeptHere();
    ~NothingKeptHere();
    NothingKeptHere(const NothingKeptHere&) = delete;
    NothingKeptHere& operator=(const NothingKeptHere&) = delete;
};

/** Returns the name of a call, as docs/real-time.md has it. */
std::string_view nameOf(Kept call);

/** Calls what was given to KeptCalls::beforeSleep. */
void runBeforeSleep();

/** Stands around a wrapped call: counts it in a section, and lets it pass if it is on the list. */
class KeptPassage {
  public:
    explicit KeptPassage(Kept call);

  private:
    std::optional<RealTimePause> pause_;
};

}  // namespace test
