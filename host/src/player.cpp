#include "vorlin/player.h"

#include <limits>
#include <new>
#include <optional>
#include <utility>

#include "bypass_control.h"
#include "call_stream.h"
#include "filter_pump.h"
#include "vorlin/filter_prototype.h"
#include "vorlin/thread.h"
#include "working_time.h"

extern "C" {
#include <libavutil/error.h>
}

namespace Vorlin {

namespace {

bool isSameStream(const IQFFrame::audioInfo& a, const IQFFrame::audioInfo& b) {
    return a.format == b.format && a.channels == b.channels && a.sample_rate == b.sample_rate &&
           a.channel_layout == b.channel_layout;
}

class FilterPlayer final : public Player {
  public:
    FilterPlayer(std::shared_ptr<Plugin> plugin, std::unique_ptr<IAudioFilter> filter,
                 std::unique_ptr<BypassControl> bypass, std::shared_ptr<const qfThreadClock> worker,
                 const PlayerConfig& config, Output output)
        : mPlugin(std::move(plugin)),
          mBypass(std::move(bypass)),
          mFilter(std::move(filter)),
          mWorkingTime(*mFilter, *mBypass, config.active, std::move(worker)),
          mOutput(std::move(output)),
          mPump(*mFilter, config.active, *mBypass, mWorkingTime, config.stall_limit,
                [this](std::unique_ptr<IQFFrame> frame) { receive(std::move(frame)); }) {
        if (config.call_frames > 0 || config.corrects_times) makeCallStream(config);
    }

    bool setOptions(const std::string& json) override {
        // The effect that was on gets the frames that wait.
        if (mCalls && mCalls->isUnderWay()) orFlush([this] { return mCalls->finishWaiting(); });
        return mFilter->setOption(filterPrototype::FILTER_OPTION, json, {});
    }

    void setVideoFps(double fps) override {
        mUnreportedFps = fps;
        reportRates();
    }

    void setSpeed(double speed) override {
        mUnreportedSpeed = speed;
        reportRates();
    }

    void setBypass(bool bypass) override { mBypass->setListener(bypass); }
    void retryAfterOverload() override { mBypass->retryAfterOverload(); }
    bool isBypassed() const override { return mBypass->isBypassed(); }

    int push(std::unique_ptr<IQFFrame> frame) override {
        reportRates();
        return orFlush([&] { return pushFrame(std::move(frame)); });
    }

    int drain() override {
        return orFlush([this] { return end(kWholeTail); });
    }

    void seek() override { flush(); }

    const PlayerCounts& counts() const override { return mCounts; }
    IAudioFilter& filter() override { return *mFilter; }

  private:
    static constexpr int64_t kNoTail = 0;
    static constexpr int64_t kWholeTail = std::numeric_limits<int64_t>::max();

    // Without memory nobody knows which frame goes with which call any more: all of them are thrown away.
    template <typename Work>
    int orFlush(Work work) try {
        return work();
    } catch (const std::bad_alloc&) {
        flush();
        return AVERROR(ENOMEM);
    }

    // Reports the numbers that the filter does not know yet. Those for which there is no memory wait for the
    // next call.
    void reportRates() {
        report(mUnreportedFps, filterPrototype::VIDEO_FPS_OPTION, &WorkingTime::setVideoFps);
        report(mUnreportedSpeed, filterPrototype::PLAYER_SPEED_OPTION, &WorkingTime::setSpeed);
    }

    void report(std::optional<double>& rate, const std::string& key, void (WorkingTime::*take)(double)) {
        if (!rate) return;
        const auto answer = mBypass->reportRate(key, *rate);
        if (answer == BypassControl::RateAnswer::NoMemory) return;
        if (answer == BypassControl::RateAnswer::Taken) (mWorkingTime.*take)(*rate);
        rate.reset();
    }

    int pushFrame(std::unique_ptr<IQFFrame> frame) {
        if (!frame) return AVERROR(EINVAL);
        const IQFFrame::audioInfo stream = frame->getInfo();
        if (mStream && !isSameStream(*mStream, stream)) {
            if (const int result = end(kNoTail); result < 0) return result;
            flush();
        }
        if (mCalls && CallStream::takes(*frame)) {
            mStream = stream;
            return mCalls->push(std::move(frame), isBypassed());
        }
        if (mCalls && mCalls->isUnderWay()) {
            if (const int result = end(kNoTail); result < 0) return result;
        }
        const int result = pushToFilter(frame);
        if (result == 0) mStream = stream;
        return result;
    }

    void makeCallStream(const PlayerConfig& config) {
        const CallStream::Filter filter{
            .push = [this](std::unique_ptr<IQFFrame>& call) { return pushToFilter(call); },
            .settle = [this] { return settle(); },
            .timing = dynamic_cast<const ITimedFilter*>(mFilter.get()),
        };
        mCalls = std::make_unique<CallStream>(config, filter, mOutput);
    }

    int pushToFilter(std::unique_ptr<IQFFrame>& frame) {
        if (underWay() == 0) mWorkingTime.forget();
        const int result = mPump.push(frame);
        countFrames();
        return result;
    }

    void countFrames() {
        mCounts.pushed = mPump.taken();
        mCounts.bypassed = mPump.takenBypassed();
        mCounts.pulled = mPump.handedOver();
    }

    void receive(std::unique_ptr<IQFFrame> frame) {
        if (!mCalls || !mCalls->receive(frame)) mOutput(std::move(frame));
    }

    // Waits until everything has come out of the filter.
    int settle() {
        if (!mStream) return 0;
        const int result = mPump.passFence(*mStream);
        countFrames();
        if (result == 0) mCounts.dropped = mCounts.pushed - mCounts.pulled - mCounts.discarded;
        return result;
    }

    int end(int64_t longest_tail_frames) {
        return mCalls ? mCalls->end(longest_tail_frames, isBypassed()) : settle();
    }

    // The result includes frames that the filter gave up since the last drain, because nothing tells them
    // apart.
    uint64_t underWay() const {
        return mCounts.pushed - mCounts.pulled - mCounts.dropped - mCounts.discarded;
    }

    void flush() {
        mFilter->flush();
        if (mCalls) mCalls->forget();
        countFrames();  // a lack of memory may have ended the call that would have counted
        mCounts.discarded += underWay();
        ++mCounts.flushes;
        mStream.reset();
    }

    // The order matters for destruction: the filter's code lies in the plug-in, and the filter may send
    // events to mBypass until it is gone.
    const std::shared_ptr<Plugin> mPlugin;
    const std::unique_ptr<BypassControl> mBypass;
    const std::unique_ptr<IAudioFilter> mFilter;
    WorkingTime mWorkingTime;
    const Output mOutput;
    std::unique_ptr<CallStream> mCalls;  // null if frames go through as they come
    FilterPump mPump;
    std::optional<IQFFrame::audioInfo> mStream;  // of the frames since the last flush; empty before the first
    std::optional<double> mUnreportedFps;        // the filter had no memory for it
    std::optional<double> mUnreportedSpeed;      // likewise
    PlayerCounts mCounts;
};

}  // namespace

Player::~Player() = default;

std::unique_ptr<Player> Player::create(std::shared_ptr<Plugin> plugin, const PlayerConfig& config,
                                       Output output) try {
    if (config.call_frames < 0 || config.call_frames > kLongestCall_frames) return nullptr;
    std::unique_ptr<BypassControl> bypass;  // destroyed after the filter, whose callback refers to it
    auto filter =
        filterPrototype::createFilter(config.filter_name, config.source, config.source, config.active);
    if (!filter) return nullptr;
    bypass = std::make_unique<BypassControl>(*filter);

    const auto clock_before = qfThread::clockOfNewest();
    constexpr uint64_t kNoFlags = 0;
    if (!filter->init(kNoFlags)) return nullptr;
    auto worker = qfThread::clockOfNewest();
    if (worker == clock_before) worker = nullptr;

    bypass->apply();
    return std::make_unique<FilterPlayer>(std::move(plugin), std::move(filter), std::move(bypass),
                                          std::move(worker), config, std::move(output));
} catch (const std::bad_alloc&) {
    return nullptr;
}

}  // namespace Vorlin
