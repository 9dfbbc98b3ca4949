#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "effects.h"
#include "relaxed_atomic.h"
#include "spsc_queue.h"
#include "timed_filter.h"
#include "vorlin/av_frame.h"
#include "vorlin/filter.h"
#include "vorlin/filter_prototype.h"
#include "vorlin/results.h"
#include "vorlin/thread.h"

struct AVFilterContext;
struct AVFilterGraph;
struct AVFrame;

namespace Vorlin {

struct FilterOptions;

/** The name of the filter, the tag of its log lines and the name of its worker thread. */
inline constexpr char kFilterName[] = "SonivexFilter";

/** Offers the audio effects to a player as one filter: surround for headphones, dialogue enhancement and the
 *  normalizer. At most one effect processes a frame.
 *
 *      push -> mInQueue -> FilterLoop: checks -> input graph (to s16) -> effect -> output graph
 *           -> mOutQueue -> pull
 *
 *  Threads: the player's thread calls every public function. The worker of an active filter runs
 *  `FilterLoop`. An inactive filter, or an active one that got no thread, runs the loop inside `push`. Frames
 *  pass between the threads through the two queues only. Options are relaxed atomics. The graphs, the handles
 *  and the description of the stream belong to the worker, and to `flush` while the worker is paused.
 *
 *  Ownership: a frame belongs to the filter from a successful `push` until `pull`. Its timestamps, duration,
 *  side data and metadata come out as they went in.
 *
 *  An effect takes its options when its handle is made, which is at the first frame that needs the handle. A
 *  later change takes effect after the next `flush`. */
class sonivexFilter : public IAudioFilter, public filterPrototype, public ITimedFilter {
  public:
    /** Makes the prototype through which a player finds the filter, and enters it in the registry. The
     *  argument is not used. [load] not real-time safe: takes a lock, allocates */
    explicit sonivexFilter(int);
    /** Makes a working filter. It passes every frame through untouched until `setInvalid(false)`.
     *  @param src    replaced by the description of the first frame that an effect processes.
     *  @param dst    kept, not used.
     *  @param active true if `init` starts a worker thread.
     *  [any, concurrent] not real-time safe: allocates */
    sonivexFilter(const IQFFrame::audioInfo& src, const IQFFrame::audioInfo& dst, bool active);
    /** Stops the worker, and frees the frames inside, the graphs and the handles. A prototype has none of
     *  them; it leaves the registry.
     *  [player thread], for a prototype [load]; not real-time safe: waits for the worker, frees memory,
     *  closes dump files, logs */
    ~sonivexFilter() override;

    /** Sets an option. filterPrototype lists the keys, docs/options.md the values. `extra` is not used, and
     *  an unknown key is ignored.
     *  @return false only for FILTER_OPTION with a text that is not JSON, or without memory for it or for the
     *  preparation of the thread for exceptions, or without memory for the exception below. This is logged,
     *  and no option has changed then.
     *  @throws std::invalid_argument for a frame rate or speed that is not a number.
     *  [player thread] not real-time safe: allocates, logs, may run the event callback */
    bool setOption(const std::string& key, const std::string& value, const std::string& extra) override;
    /** Starts the worker of an active filter. If the system gives no thread, the filter works inside `push`
     *  as an inactive one does, and a later `init` tries again. `flags` is not used.
     *  @return true always.
     *  [player thread] not real-time safe: starts a thread, allocates, logs */
    bool init(uint64_t flags) override;
    /** Hands a frame in. The filter takes it while at most one frame waits for the worker and fewer than
     *  three wait for `pull`. It does not wait; `timeOut` is not used.
     *  @return kSuccess with `frame` null, or kTryAgain with `frame` left to the caller.
     *  [player thread] real-time safe while a worker runs; without a worker it processes the frames that
     *  wait, as soon as there is memory to prepare the thread for exceptions, and is not real-time safe:
     *  allocates, logs, and writes to the disk while dumping */
    int push(std::unique_ptr<IQFFrame>& frame, uint64_t timeOut) override;
    /** Takes the oldest frame that is ready. It does not wait; `timeOut` is not used.
     *  @return kSuccess with `frame` replaced, or kTryAgain with `frame` untouched.
     *  [player thread] real-time safe if `frame` is null; otherwise frees the frame that it replaces */
    int pull(std::unique_ptr<IQFFrame>& frame, uint64_t timeOut) override;
    /** Destroys every frame inside, all history of the effects, both graphs and the samples of the load
     *  guard, and closes the dump files. Options and switches stay.
     *  [player thread] not real-time safe: waits until the worker pauses, frees memory, closes dump files,
     *  logs */
    void flush() override;
    /** @return kFilterName. [any, concurrent] not real-time safe: may allocate */
    std::string getName() override;
    /** @return true if `name` is "sonivex"; the codec hints are not used. [any, concurrent] real-time safe */
    bool is_supported(const std::string& name, int codec, int profile, int level) override;
    /** Makes a working filter, which the caller owns. @return null if there is no memory for it, which is
     *  logged. [any, concurrent] not real-time safe: allocates */
    IAudioFilter* clone(IQFFrame::audioInfo src, IQFFrame::audioInfo dst, bool active) override;
    /** Passes every frame through untouched, or stops doing so. The change applies from the next frame that
     *  the worker takes. [player thread] not real-time safe: a change is logged */
    void setInvalid(bool invalid) override;
    /** Keeps the name of what is being played; nothing depends on it. Without memory the old one stays.
     *  [player thread] not real-time safe: allocates */
    void setCurrentTarget(const std::string& target) override;
    /** @return true if frame rate times speed is 62 or more. A filter that is not set invalid reports a
     *  crossing of this limit to the event callback.
     *  [player thread] not real-time safe: allocates for the event, runs the event callback */
    bool isOverFps() override;
    /** Takes `elapsed`, the milliseconds of work on one frame, into the load guard's mean. If the mean is
     *  over the limit, the filter sets itself invalid and sends FILTER_INVALID_PERFORMANCE. A filter that is
     *  set invalid, knows no frame rate or gets no memory for the number ignores the call.
     *  @throws std::bad_function_call when the mean is over the limit and no callback is installed.
     *  [player thread] not real-time safe: allocates, logs, may run the event callback */
    void checkTimeConsume(uint64_t elapsed) override;

    /** @return the timing of the effect that the switches select, whether or not the filter is set invalid.
     *  The tail is that of the options as they are now; an effect that runs keeps its options until the next
     *  `flush`.
     *  [player thread] real-time safe */
    FilterTiming timing(const IQFFrame::audioInfo& stream) const override;

  private:
    friend struct EffectTable;        // points to switches and handles, and reads the options
    friend struct SonivexFilterPeer;  // lets tests read the fields

    /** The fate of a frame that the loop has taken, and the result with which the loop ends. */
    struct Outcome {
        enum Way {
            PassedOn,   // goes into the output queue untouched; the loop ends
            Processed,  // goes into the output queue; the loop takes the next frame
            GivenUp,    // is destroyed; the loop ends with `result`
        } way = GivenUp;
        int result = kFrameLost;
    };
    static Outcome passedOn() { return {Outcome::PassedOn, 0}; }
    static Outcome processed() { return {Outcome::Processed, 0}; }
    static Outcome givenUp(int result) { return {Outcome::GivenUp, result}; }

    // The private functions belong to the worker, except startWorker, isReadyToThrow and those of options.cpp
    // and load_guard.cpp, which belong to the player's thread. `flush` calls some of the worker's functions
    // while the worker is paused.

    // SonivexFilter.cpp
    void startWorker();
    void goOnWithoutWorker(const char* reason);
    bool worksInsidePush() const;
    bool isReadyToThrow();

    // worker_loop.cpp
    int runWorker();
    int FilterLoop();
    void handOut(std::unique_ptr<IQFFrame> frame);
    Outcome handleFrame(IQFFrame* frame);
    const EffectRecord* selectedEffect() const;

    // effect_dispatch.cpp
    Outcome dispatch(const EffectRecord& effect, IQFFrame::audioInfo& info, AVFrame* frame);
    std::unique_ptr<short[]> runEffect(const EffectRecord& effect, const InputBlock& in, int out_channels);
    void releaseHandles();

    // pcm_dump.cpp
    void dumpPCMData(const short* pcm, int channels, int samples, const std::string& effect, bool is_input);
    static std::string getDumpDirectory();
    static std::string generateSessionId();
    void startDumpSession(const std::string& directory, const std::string& effect);
    bool openDumpFile(const std::string& name, const std::string& path);
    void writeToDump(const std::string& name, const short* pcm, int channels, int samples);
    void closeDumpFiles();

    // options.cpp
    bool setFilterOptions(const std::string& json);
    void applyOptions(const FilterOptions& options);
    void applySurroundType(const std::string& name);
    void switchEffect(const EffectRecord& effect, bool is_on);
    void selectOnly(const EffectRecord& effect);

    // input_graph.cpp
    void takeOnStream(const IQFFrame::audioInfo& info);
    int initAVFilter();
    int createSrcBufferFilter();
    AVFilterContext* createFilter(const char* name, const char* args);
    int addFilter(AVFilterContext** last, const char* name, const char* args);
    int convertToS16(const IQFFrame::audioInfo& info, AVFrame* frame);
    void freeInputGraph();

    // output_graph.cpp
    int initOutputAVFilter(int channels, int sampleRate);
    int putBack(IQFFrame::audioInfo& info, AVFrame* frame, const short* block, int channels, int frames);
    bool putBackInPlayersFormat(IQFFrame::audioInfo& info, AVFrame* frame, const short* block, int channels,
                                int frames);
    bool prepareOutputGraph(int channels, int sampleRate);
    int runOutputGraph(AVFrame* in, AVFrame* out);
    void freeOutputGraph();

    // load_guard.cpp
    bool takeCost(uint64_t cost);
    void notify(const std::string& event);

    void* mSurroundHandle = nullptr;
    void* mDialogueHandle = nullptr;
    void* mNormalizerHandle = nullptr;
    int32_t mHandleChannels = 0;    // channel count for which the handles were made
    int32_t mHandleSampleRate = 0;  // Hz, for which the handles were made
    std::string mCurrentTarget;
    Relaxed<int32_t> mSurroundType = 1;     // 1 "3DSurround", 13 "MegaBass"
    Relaxed<int32_t> mSurroundMode = 1;     // 1 to 3
    Relaxed<int32_t> mSurroundLimiter = 1;  // 1 limits peaks, other values clip them
    Relaxed<bool> mEnableSurround = false;
    Relaxed<bool> mEnableDialogue = false;
    Relaxed<bool> mEnableNormalizer = false;
    Relaxed<double> mVoice = 1.0;  // dialogue voice level, never below 1
    Relaxed<bool> mEnableDump = false;
    std::map<std::string, int> mDumpFds;          // file descriptors; all three maps are keyed by file name
    std::map<std::string, uint64_t> mDumpTotals;  // bytes written
    std::map<std::string, std::string> mDumpPaths;
    std::string mSessionId;  // ID of the dump session; empty until a block is dumped
    std::vector<std::string> mSupportedNames{"sonivex"};
    std::unique_ptr<qfThread> mThread;
    bool mIsWithoutThread = false;                // the last `init` of an active filter got no thread
    bool mWorkerCanThrow = false;                 // the worker has had memory to prepare for exceptions
    std::thread::id mReadyThread;                 // the player's, once it has had memory for that
    SpscQueue<IQFFrame*> mOutQueue{kQueueSlots};  // filled by the worker, emptied by `pull`
    SpscQueue<IQFFrame*> mInQueue{kQueueSlots};   // filled by `push`, emptied by the worker
    std::atomic<bool> mInvalid{true};
    bool mOverFps = false;
    // The events exist before they are needed, so that a lack of memory cannot keep them from the player. The
    // filter owns them, because a player may still call it while the library's globals are destroyed.
    const std::string mOverFpsEvent;
    const std::string mRecoveryEvent;
    const std::string mOverloadEvent;
    std::deque<uint64_t> mCostWindow;  // squared excess of each of the last frames, ms²
    uint64_t mCostSum = 0;             // sum over mCostWindow, ms²
    int32_t mFps = 0;                  // of the video, whole frames per second
    int32_t mSpeed = 1;                // playback speed, whole
    int32_t mChannels = 0;             // channel count of the last frame that the loop took
    AVFilterGraph* mFilterGraph = nullptr;
    AVFilterContext* mAbuffer_ctx = nullptr;
    AVFilterContext* mAbuffersink_ctx = nullptr;
    bool mHasStream = false;  // mSource describes the stream of the last input graph
    bool mIsPrototype = false;
    int32_t mSrcFormat = -1;  // AVSampleFormat to deliver, that of the stream's first frame; -1 = none yet
    AVFilterGraph* mOutFilterGraph = nullptr;
    AVFilterContext* mOutAbuffer_ctx = nullptr;
    AVFilterContext* mOutAbuffersink_ctx = nullptr;
    int32_t mOutChannels = -1;    // channel count of the output graph; -1 = none yet
    int32_t mOutSampleRate = -1;  // Hz, of the output graph; -1 = none yet

    static constexpr std::size_t kQueueSlots = 11;  // one stays empty: a queue holds 10 frames
};

}  // namespace Vorlin
