#pragma once

#include <memory>
#include <string>
#include <vector>

#include "SonivexFilter.h"
#include "support/audio_frames.h"

namespace Vorlin {

/** Reads what the filter keeps to itself. */
struct SonivexFilterPeer {
    static constexpr auto surroundHandle = &sonivexFilter::mSurroundHandle;
    static constexpr auto dialogueHandle = &sonivexFilter::mDialogueHandle;
    static constexpr auto normalizerHandle = &sonivexFilter::mNormalizerHandle;
    static constexpr auto currentTarget = &sonivexFilter::mCurrentTarget;
    static constexpr auto surroundType = &sonivexFilter::mSurroundType;
    static constexpr auto surroundMode = &sonivexFilter::mSurroundMode;
    static constexpr auto surroundLimiter = &sonivexFilter::mSurroundLimiter;
    static constexpr auto enableSurround = &sonivexFilter::mEnableSurround;
    static constexpr auto enableDialogue = &sonivexFilter::mEnableDialogue;
    static constexpr auto enableNormalizer = &sonivexFilter::mEnableNormalizer;
    static constexpr auto voice = &sonivexFilter::mVoice;
    static constexpr auto enableDump = &sonivexFilter::mEnableDump;
    static constexpr auto dumpFds = &sonivexFilter::mDumpFds;
    static constexpr auto dumpTotals = &sonivexFilter::mDumpTotals;
    static constexpr auto dumpPaths = &sonivexFilter::mDumpPaths;
    static constexpr auto sessionId = &sonivexFilter::mSessionId;
    static constexpr auto supportedNames = &sonivexFilter::mSupportedNames;
    static constexpr auto thread = &sonivexFilter::mThread;
    static constexpr auto outQueue = &sonivexFilter::mOutQueue;
    static constexpr auto inQueue = &sonivexFilter::mInQueue;
    static constexpr auto invalid = &sonivexFilter::mInvalid;
    static constexpr auto overFps = &sonivexFilter::mOverFps;
    static constexpr auto costWindow = &sonivexFilter::mCostWindow;
    static constexpr auto costSum = &sonivexFilter::mCostSum;
    static constexpr auto fps = &sonivexFilter::mFps;
    static constexpr auto speed = &sonivexFilter::mSpeed;
    static constexpr auto filterGraph = &sonivexFilter::mFilterGraph;
    static constexpr auto isPrototype = &sonivexFilter::mIsPrototype;
    static constexpr auto srcFormat = &sonivexFilter::mSrcFormat;
    static constexpr auto outFilterGraph = &sonivexFilter::mOutFilterGraph;
    static constexpr auto outChannels = &sonivexFilter::mOutChannels;
    static constexpr auto outSampleRate = &sonivexFilter::mOutSampleRate;
    static constexpr auto filterLoop = &sonivexFilter::FilterLoop;
    static constexpr auto dumpPCMData = &sonivexFilter::dumpPCMData;
    static constexpr auto getDumpDirectory = &sonivexFilter::getDumpDirectory;
    static constexpr auto generateSessionId = &sonivexFilter::generateSessionId;
};

}  // namespace Vorlin

namespace test {

using Peer = Vorlin::SonivexFilterPeer;

enum class Mode { Inactive, Active };

/** A working filter, initialised, with the conveniences of a patient player. */
class FilterUnderTest {
  public:
    explicit FilterUnderTest(Mode mode = Mode::Inactive);

    Vorlin::sonivexFilter* operator->() { return mFilter.get(); }
    Vorlin::sonivexFilter& operator*() { return *mFilter; }
    template <typename Field>
    auto& field(Field member) {
        return (*mFilter).*member;
    }

    void options(const std::string& json);
    /** Valid, with the normalizer on. */
    void startNormalizer();

    /** Hand in one frame and wait for the next that comes out; null when none does. */
    std::unique_ptr<Vorlin::IQFFrame> pass(std::unique_ptr<Vorlin::IQFFrame> frame);
    /** Wait for a frame to come out; null when none does in `patience_ms`. */
    std::unique_ptr<Vorlin::IQFFrame> pullPatiently(int patience_ms = 400);
    /** Push, pulling into `out` as long as the filter wants to be asked again. */
    void pushPatiently(std::unique_ptr<Vorlin::IQFFrame> frame,
                       std::vector<std::unique_ptr<Vorlin::IQFFrame>>& out);

  private:
    Mode mMode;
    std::unique_ptr<Vorlin::sonivexFilter> mFilter;
};

/** Collects what the filter logs while it lives, as "level message". */
class LogCapture {
  public:
    LogCapture();
    ~LogCapture();
    std::vector<std::string> lines() const;
    int count(const std::string& line) const;

  private:
    struct Lines;
    std::shared_ptr<Lines> mLines;
};

}  // namespace test
