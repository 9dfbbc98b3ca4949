#include "fake_filter.h"

#include <utility>

#include "vorlin/av_frame.h"

namespace Vorlin::test {

namespace {

constexpr int TRY_AGAIN = -35;
constexpr int GIVEN_UP = -1;
constexpr int FIRST_PRODUCT_OVER = 62;
constexpr int64_t IDLE_MS = 2;

bool isFence(const IQFFrame& frame) {
    return dynamic_cast<const NumberedFrame*>(&frame) == nullptr;
}

}  // namespace

FakeFilter::FakeFilter(std::string supportedName, std::shared_ptr<Script> script)
    : mSupportedName(std::move(supportedName)), mScript(std::move(script)), mIsPrototype(true) {
    addPrototype(this);
}

FakeFilter::FakeFilter(const IQFFrame::audioInfo& src, const IQFFrame::audioInfo& dst, bool active,
                       std::shared_ptr<Script> script)
    : IAudioFilter(src, dst, active), mScript(std::move(script)) {}

FakeFilter::~FakeFilter() {
    mThread.reset();
    if (!mIsPrototype) mScript->isDestroyed = true;
}

IAudioFilter* FakeFilter::clone(IQFFrame::audioInfo src, IQFFrame::audioInfo dst, bool active) {
    return new FakeFilter(src, dst, active, mScript);
}

bool FakeFilter::init(uint64_t) {
    if (!mScript->initSucceeds) return false;
    if (mActive) {
        mThread = std::make_unique<qfThread>([this] { return loop(); }, NAME);
        mScript->workerClock = mThread->clock();
        mThread->start();
    }
    return true;
}

bool FakeFilter::setOption(const std::string& key, const std::string& value, const std::string&) {
    mScript->options.push_back(key + "=" + value);
    if (key == VIDEO_FPS_OPTION) {
        mFps = static_cast<int>(std::stod(value));
        mOverFps = isOverFps();
    } else if (key == PLAYER_SPEED_OPTION) {
        mSpeed = static_cast<int>(std::stof(value));
        mOverFps = isOverFps();
    }
    return key != FILTER_OPTION || !value.empty();
}

int FakeFilter::push(std::unique_ptr<IQFFrame>& frame, uint64_t) {
    int result = TRY_AGAIN;
    {
        const std::lock_guard lock(mMutex);
        if (mIn.size() <= 1 && mOut.size() < 3) {
            if (isFence(*frame)) {
                mScript->fences.push_back(frame->getInfo());
                const auto* avFrame = dynamic_cast<AVQFFrame*>(frame.get());
                if (avFrame == nullptr || static_cast<AVFrame*>(*avFrame) == nullptr) {
                    mScript->fencesHoldSamples = false;
                }
            }
            mIn.push_back(std::move(frame));
            result = 0;
        } else {
            ++mScript->refusals;
        }
    }
    if (!mActive) loop();
    return result;
}

int FakeFilter::pull(std::unique_ptr<IQFFrame>& frame, uint64_t) {
    const std::lock_guard lock(mMutex);
    if (mOut.empty()) return TRY_AGAIN;
    frame = std::move(mOut.front());
    mOut.pop_front();
    return 0;
}

void FakeFilter::flush() {
    ++mScript->flushes;
    if (mThread) mThread->pause();
    mIn.clear();
    mOut.clear();
    if (mThread) mThread->start();
}

std::unique_ptr<IQFFrame> FakeFilter::take() {
    const std::lock_guard lock(mMutex);
    if (mScript->isStuck || mIn.empty() || mOut.size() > 1) return nullptr;
    auto frame = std::move(mIn.front());
    mIn.pop_front();
    return frame;
}

// @return false when the frame is given up.
bool FakeFilter::treat(const IQFFrame& frame) {
    const auto* numbered = dynamic_cast<const NumberedFrame*>(&frame);
    if (numbered == nullptr) return !mScript->eatsFences;
    if (mInvalid) return true;
    if (!mScript->keeps(*numbered)) return false;
    mScript->work();
    ++mScript->processed;
    return true;
}

int FakeFilter::loop() {
    if (mScript->runsToSkip > 0) {
        --mScript->runsToSkip;
        return 0;
    }
    for (int taken = 0; taken < mScript->framesPerRun; ++taken) {
        auto frame = take();
        if (!frame) {
            if (mActive) qf_msleep(IDLE_MS);
            return 0;
        }
        if (!treat(*frame)) return GIVEN_UP;
        const std::lock_guard lock(mMutex);
        mOut.push_back(std::move(frame));
    }
    return 0;
}

void FakeFilter::setInvalid(bool invalid) {
    mInvalid = invalid;
    mScript->isInvalid = invalid;
    if (!invalid) ++mScript->timesMadeValid;
}

void FakeFilter::send(const char* event) {
    mEventCallback(0, getName() + ":" + event);
}

bool FakeFilter::isOverFps() {
    const bool isOver = mSpeed * mFps >= FIRST_PRODUCT_OVER;
    if (!mInvalid && isOver != mOverFps) send(isOver ? FILTER_INVALID_OVER_FPS : FILTER_VALID_RECOVERY);
    return isOver;
}

void FakeFilter::checkTimeConsume(uint64_t elapsed) {
    mScript->samplesMs.push_back(elapsed);
    if (mInvalid || elapsed < mScript->overloadFromMs) return;
    setInvalid(true);
    send(FILTER_INVALID_PERFORMANCE);
}

}  // namespace Vorlin::test
