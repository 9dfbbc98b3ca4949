#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "relaxed.h"
#include "spsc_queue.h"
#include "vorlin/av_frame.h"
#include "vorlin/filter.h"
#include "vorlin/filter_prototype.h"
#include "vorlin/thread.h"

struct AVFilterContext;
struct AVFilterGraph;
struct AVFrame;

namespace Vorlin {

/** Name of the filter, tag of its log lines and name of its worker thread. */
inline constexpr char kFilterName[] = "SonivexFilter";

/** Results that the player knows by number on every system. */
inline constexpr int kTryAgain = -35;
inline constexpr int kFrameLost = -1;

/** The effect that one frame goes through. */
enum class Effect { None, Dialogue, Surround, Normalizer };

/** The audio effects as one filter of the player: surround for headphones, dialogue enhancement, normalizer.
 *
 *      push -> mInQueue -> FilterLoop: checks -> input graph (to s16) -> effect -> output graph
 *           -> mOutQueue -> pull
 *
 *  Threads: the player's thread calls every public function; an active filter's worker runs `FilterLoop`. An
 *  inactive filter, or one that got no thread, runs it inside `push`. The two queues are the only hand-over.
 *  Options are relaxed atomics; the graphs, the handles and what is remembered of the stream belong to the
 *  worker, and to `flush` while it pauses.
 *
 *  Ownership: a frame belongs to the filter from a successful `push` until `pull`; timestamps, duration, side
 *  data and metadata of a frame come out as they went in. Options of an effect hold from the moment its
 *  handle is made, at the first frame that needs it; a later change takes effect after the next `flush`. */
class sonivexFilter : public IAudioFilter, public filterPrototype {
  public:
    /** The prototype through which the player finds the filter: enters itself in the registry. */
    explicit sonivexFilter(int);
    /** A working filter. It bypasses every frame until `setInvalid(false)`. */
    sonivexFilter(const IQFFrame::audioInfo& src, const IQFFrame::audioInfo& dst, bool active);
    ~sonivexFilter() override;

    /** Keys and values: see filterPrototype and docs/options.md. @return false only for FILTER_OPTION with a
     * text that is not JSON. @throws std::invalid_argument for a frame rate or speed that is no number. */
    bool setOption(const std::string& key, const std::string& value, const std::string& extra) override;
    /** Start an active filter's worker. When the system gives no thread, the filter works inside `push` as an
     * inactive one does, and a later `init` tries again. @return true always. */
    bool init(uint64_t flags) override;
    int push(std::unique_ptr<IQFFrame>& frame, uint64_t timeOut) override;
    int pull(std::unique_ptr<IQFFrame>& frame, uint64_t timeOut) override;
    void flush() override;
    std::string getName() override;
    bool is_supported(const std::string& name, int codec, int profile, int level) override;
    IAudioFilter* clone(IQFFrame::audioInfo src, IQFFrame::audioInfo dst, bool active) override;
    void setInvalid(bool invalid) override;
    void setCurrentTarget(const std::string& target) override;
    bool isOverFps() override;
    /** @throws std::bad_function_call when the guard trips and no callback is installed. */
    void checkTimeConsume(uint64_t elapsed) override;

  private:
    friend struct SonivexFilterPeer;  // lets a test read the fields

    /** What becomes of a frame that the loop has taken, and what the loop then answers. */
    struct Outcome {
        enum Way {
            PassedOn,   // into the output queue as it is; the loop ends
            Processed,  // into the output queue; the loop takes the next frame
            GivenUp,    // destroyed; the loop ends with `result`
        } way = GivenUp;
        int result = kFrameLost;
    };
    static Outcome passedOn() { return {Outcome::PassedOn, 0}; }
    static Outcome processed() { return {Outcome::Processed, 0}; }
    static Outcome givenUp(int result) { return {Outcome::GivenUp, result}; }

    /** One frame's audio as the effects take it: [frames][channels] interleaved signed 16-bit. */
    struct InputBlock {
        const short* samples;
        int channels;
        int sampleRate;  // Hz
        int frames;
    };

    // SonivexFilter.cpp
    void startWorker();
    bool worksInsidePush() const;

    // worker_loop.cpp
    int FilterLoop();
    void handOut(std::unique_ptr<IQFFrame> frame);
    Outcome handleFrame(IQFFrame* frame);
    Effect selectedEffect() const;

    // effect_dispatch.cpp
    Outcome dispatch(Effect effect, IQFFrame::audioInfo& info, AVFrame* frame);
    std::unique_ptr<short[]> enhanceDialogue(const InputBlock& in);
    std::unique_ptr<short[]> renderSurround(const InputBlock& in, int out_channels);
    std::unique_ptr<short[]> normalize(const InputBlock& in);
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
    void selectOnly(Effect effect);

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
    void notify(const char* event);

    void* mSurroundHandle = nullptr;
    void* mDialogueHandle = nullptr;
    void* mNormalizerHandle = nullptr;
    int32_t mHandleChannels = 0;    // channel count that the handles were made for
    int32_t mHandleSampleRate = 0;  // Hz, that the handles were made for
    std::string mCurrentTarget;
    Relaxed<int32_t> mSurroundType = 1;  // 1 "3DSurround", 13 "MegaBass"
    Relaxed<int32_t> mSurroundMode = 1;  // 1 to 3
    Relaxed<int32_t> mSurroundLimiter = 1;
    Relaxed<bool> mEnableSurround = false;
    Relaxed<bool> mEnableDialogue = false;
    Relaxed<bool> mEnableNormalizer = false;
    Relaxed<double> mVoice = 1.0;  // dialogue voice level, never below 1
    Relaxed<bool> mEnableDump = false;
    std::map<std::string, int> mDumpFds;          // descriptors by file name, as the next two
    std::map<std::string, uint64_t> mDumpTotals;  // bytes
    std::map<std::string, std::string> mDumpPaths;
    std::string mSessionId;  // of the dump; empty until a block is dumped
    std::vector<std::string> mSupportedNames{"sonivex"};
    std::unique_ptr<qfThread> mThread;
    bool mIsWithoutThread = false;                // the last `init` of an active filter got none
    SpscQueue<IQFFrame*> mOutQueue{kQueueSlots};  // produced by the worker, consumed by `pull`
    SpscQueue<IQFFrame*> mInQueue{kQueueSlots};   // produced by `push`, consumed by the worker
    std::atomic<bool> mInvalid{true};
    bool mOverFps = false;
    std::deque<uint64_t> mCostWindow;  // squared excess, ms²
    uint64_t mCostSum = 0;             // ms²
    int32_t mFps = 0;
    int32_t mSpeed = 1;
    int32_t mChannels = 0;  // of the last frame taken
    AVFilterGraph* mFilterGraph = nullptr;
    AVFilterContext* mAbuffer_ctx = nullptr;
    AVFilterContext* mAbuffersink_ctx = nullptr;
    bool mHasStream = false;  // `mSource` describes the stream that the last input graph was made for
    bool mIsPrototype = false;
    int32_t mSrcFormat = -1;  // AVSampleFormat to deliver: of the stream's first frame; -1 = none yet
    AVFilterGraph* mOutFilterGraph = nullptr;
    AVFilterContext* mOutAbuffer_ctx = nullptr;
    AVFilterContext* mOutAbuffersink_ctx = nullptr;
    int32_t mOutChannels = -1;
    int32_t mOutSampleRate = -1;  // Hz

    static constexpr std::size_t kQueueSlots = 11;
};

}  // namespace Vorlin
