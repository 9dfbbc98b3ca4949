#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <functional>
#include <limits>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "vorlin/filter.h"
#include "vorlin/filter_prototype.h"
#include "vorlin/thread.h"

namespace Vorlin::test {

/** A frame that is known again by its number. */
class NumberedFrame final : public IQFFrame {
  public:
    NumberedFrame(int frameNumber, const audioInfo& info) : IQFFrame(info), number(frameNumber) {}
    const int number;
};

/** What a FakeFilter does, and what it saw. Shared by the test and the clone; set it before frames flow. */
struct Script {
    std::function<bool(const NumberedFrame&)> keeps = [](const NumberedFrame&) { return true; };
    std::function<void()> work = [] {};  ///< for each frame that is neither bypassed nor given up
    bool initSucceeds = true;
    bool eatsFences = false;
    int framesPerRun = std::numeric_limits<int>::max();  ///< an inactive filter's run ends after so many
    uint64_t overloadFromMs = std::numeric_limits<uint64_t>::max();  ///< a sample that trips the load guard
    std::atomic<bool> isStuck{false};                                ///< nothing moves inside
    std::atomic<int> runsToSkip{0};                                  ///< so many runs do nothing

    std::atomic<int> processed{0};
    int refusals = 0;  ///< pushes answered "try again"
    int flushes = 0;
    bool isInvalid = true;
    int timesMadeValid = 0;
    bool isDestroyed = false;
    std::vector<IQFFrame::audioInfo> fences;  ///< frames pushed that are not the test's
    bool fencesHoldSamples = true;
    std::vector<uint64_t> samplesMs;  ///< what checkTimeConsume was told
    std::vector<std::string> options;
    std::shared_ptr<const qfThreadClock> workerClock;
};

/** A filter with the queues, the loop and the load guard's events of a real one, whose processing is a
 *  script. */
class FakeFilter final : public IAudioFilter, public filterPrototype {
  public:
    static constexpr char NAME[] = "FakeFilter";

    /** The prototype, registered under `supportedName`. */
    FakeFilter(std::string supportedName, std::shared_ptr<Script> script);
    FakeFilter(const IQFFrame::audioInfo& src, const IQFFrame::audioInfo& dst, bool active,
               std::shared_ptr<Script> script);
    ~FakeFilter() override;

    bool setOption(const std::string& key, const std::string& value, const std::string& extra) override;
    bool init(uint64_t flags) override;
    int push(std::unique_ptr<IQFFrame>& frame, uint64_t timeOut) override;
    int pull(std::unique_ptr<IQFFrame>& frame, uint64_t timeOut) override;
    void flush() override;
    std::string getName() override { return NAME; }
    bool is_supported(const std::string& name, int, int, int) override { return name == mSupportedName; }
    IAudioFilter* clone(IQFFrame::audioInfo src, IQFFrame::audioInfo dst, bool active) override;
    void setInvalid(bool invalid) override;
    void setCurrentTarget(const std::string&) override {}
    bool isOverFps() override;
    void checkTimeConsume(uint64_t elapsed) override;

  private:
    using Queue = std::deque<std::unique_ptr<IQFFrame>>;

    int loop();
    std::unique_ptr<IQFFrame> take();
    bool treat(const IQFFrame& frame);
    void send(const char* event);

    const std::string mSupportedName;
    const std::shared_ptr<Script> mScript;
    bool mIsPrototype = false;
    std::mutex mMutex;  // guards both queues
    Queue mIn;
    Queue mOut;
    std::atomic<bool> mInvalid{true};
    bool mOverFps = false;
    int mFps = 0;
    int mSpeed = 1;
    std::unique_ptr<qfThread> mThread;  // last: it ends first
};

}  // namespace Vorlin::test
