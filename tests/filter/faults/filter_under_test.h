#pragma once

#include <memory>
#include <string>
#include <vector>

#include "SonivexFilter.h"
#include "support/frames/audio_frames.h"

namespace Vorlin {

/** Gives tests access to the filter's private members. */
struct SonivexFilterPeer {
    static constexpr auto kSurroundHandle = &sonivexFilter::mSurroundHandle;
    static constexpr auto kDialogueHandle = &sonivexFilter::mDialogueHandle;
    static constexpr auto kNormalizerHandle = &sonivexFilter::mNormalizerHandle;
    static constexpr auto kCurrentTarget = &sonivexFilter::mCurrentTarget;
    static constexpr auto kSurroundType = &sonivexFilter::mSurroundType;
    static constexpr auto kSurroundMode = &sonivexFilter::mSurroundMode;
    static constexpr auto kSurroundLimiter = &sonivexFilter::mSurroundLimiter;
    static constexpr auto kEnableSurround = &sonivexFilter::mEnableSurround;
    static constexpr auto kEnableDialogue = &sonivexFilter::mEnableDialogue;
    static constexpr auto kEnableNormalizer = &sonivexFilter::mEnableNormalizer;
    static constexpr auto kVoice = &sonivexFilter::mVoice;
    static constexpr auto kEnableDump = &sonivexFilter::mEnableDump;
    static constexpr auto kDumpFds = &sonivexFilter::mDumpFds;
    static constexpr auto kDumpTotals = &sonivexFilter::mDumpTotals;
    static constexpr auto kDumpPaths = &sonivexFilter::mDumpPaths;
    static constexpr auto kSessionId = &sonivexFilter::mSessionId;
    static constexpr auto kSupportedNames = &sonivexFilter::mSupportedNames;
    static constexpr auto kThread = &sonivexFilter::mThread;
    static constexpr auto kOutQueue = &sonivexFilter::mOutQueue;
    static constexpr auto kInQueue = &sonivexFilter::mInQueue;
    static constexpr auto kInvalid = &sonivexFilter::mInvalid;
    static constexpr auto kOverFps = &sonivexFilter::mOverFps;
    static constexpr auto kCostWindow = &sonivexFilter::mCostWindow;
    static constexpr auto kCostSum = &sonivexFilter::mCostSum;
    static constexpr auto kFps = &sonivexFilter::mFps;
    static constexpr auto kSpeed = &sonivexFilter::mSpeed;
    static constexpr auto kFilterGraph = &sonivexFilter::mFilterGraph;
    static constexpr auto kInputSource = &sonivexFilter::mAbuffer_ctx;
    static constexpr auto kInputSink = &sonivexFilter::mAbuffersink_ctx;
    static constexpr auto kIsPrototype = &sonivexFilter::mIsPrototype;
    static constexpr auto kSrcFormat = &sonivexFilter::mSrcFormat;
    static constexpr auto kOutFilterGraph = &sonivexFilter::mOutFilterGraph;
    static constexpr auto kOutputSource = &sonivexFilter::mOutAbuffer_ctx;
    static constexpr auto kOutputSink = &sonivexFilter::mOutAbuffersink_ctx;
    static constexpr auto kOutChannels = &sonivexFilter::mOutChannels;
    static constexpr auto kOutSampleRate = &sonivexFilter::mOutSampleRate;
    static constexpr auto kFilterLoop = &sonivexFilter::FilterLoop;
    static constexpr auto kDumpPcmData = &sonivexFilter::dumpPCMData;
    static constexpr auto kGetDumpDirectory = &sonivexFilter::getDumpDirectory;
    static constexpr auto kGenerateSessionId = &sonivexFilter::generateSessionId;
};

}  // namespace Vorlin

namespace test {

using Peer = Vorlin::SonivexFilterPeer;

enum class Mode { kInactive, kActive };

/** An initialised working filter with helpers that push and pull as a patient player does. */
class FilterUnderTest {
  public:
    explicit FilterUnderTest(Mode mode = Mode::kInactive);

    Vorlin::sonivexFilter* operator->() { return filter_.get(); }
    Vorlin::sonivexFilter& operator*() { return *filter_; }
    /** Returns a private data member, named by a constant of Peer. */
    template <typename Field>
    auto& field(Field member) {
        return (*filter_).*member;
    }

    /** Sets options from a JSON object. */
    void options(const std::string& json);
    /** Switches the normalizer on and makes the filter valid. */
    void startNormalizer();

    /** Pushes one frame and waits for the next output frame. @return null if none comes out. */
    std::unique_ptr<Vorlin::IQFFrame> pass(std::unique_ptr<Vorlin::IQFFrame> frame);
    /** Waits up to `patience_ms` for an output frame; an inactive filter is asked only once.
     *  @return null if none comes out. */
    std::unique_ptr<Vorlin::IQFFrame> pullPatiently(int patience_ms = 400);
    /** Pushes a frame and pulls finished frames into `out` while the filter returns "try again". */
    void pushPatiently(std::unique_ptr<Vorlin::IQFFrame> frame,
                       std::vector<std::unique_ptr<Vorlin::IQFFrame>>& out);

  private:
    Mode mode_;
    std::unique_ptr<Vorlin::sonivexFilter> filter_;
};

}  // namespace test
