#include "SonivexFilter.h"

#include <algorithm>
#include <new>
#include <system_error>
#include <thread>

#include "prepare_to_throw.h"
#include "vorlin/av_compat.h"
#include "vorlin/log.h"

namespace Vorlin {

namespace {

// The prototype enters the registry when the library is loaded and leaves it when the library is unloaded.
sonivexFilter se(0);
std::string kInitialStr;

// `push` accepts a frame while no more frames than these wait.
constexpr std::size_t kMaxWaitingForWorker = 1;
constexpr std::size_t kMaxWaitingForPull = 2;

constexpr char kNoMemory[] = "out of memory";

std::string eventOf(const char* name) {
    return std::string(kFilterName) + ":" + name;
}

}  // namespace

sonivexFilter::sonivexFilter(int) : mIsPrototype(true) {
    filterPrototype::addPrototype(this);
}

sonivexFilter::sonivexFilter(const IQFFrame::audioInfo& src, const IQFFrame::audioInfo& dst, bool active)
    : IAudioFilter(src, dst, active),
      mOverFpsEvent(eventOf(FILTER_INVALID_OVER_FPS)),
      mRecoveryEvent(eventOf(FILTER_VALID_RECOVERY)),
      mOverloadEvent(eventOf(FILTER_INVALID_PERFORMANCE)) {
    avfilter_register_all();
}

sonivexFilter::~sonivexFilter() {
    if (mIsPrototype) return;
    if (mThread) mThread->stop();
    mThread.reset();
    releaseHandles();
    freeOutputGraph();
    sonivexFilter::flush();
}

bool sonivexFilter::init(uint64_t) {
    // The player's thread runs the loop if there is no worker.
    const bool is_ready = isReadyToThrow();
    __log_print(LOG_INFO, kFilterName, "sonivex init");
    if (!mActive || mThread) return true;
    if (is_ready) {
        startWorker();
    } else {
        goOnWithoutWorker(kNoMemory);
    }
    return true;
}

void sonivexFilter::startWorker() {
    // Both are set before the worker runs, because it reads them.
    mIsWithoutThread = false;
    mWorkerCanThrow = false;
    try {
        auto worker = std::make_unique<qfThread>([this] { return runWorker(); }, kFilterName);
        worker->start();
        mThread = std::move(worker);
    } catch (const std::bad_alloc&) {
        goOnWithoutWorker(kNoMemory);
    } catch (const std::system_error& error) {
        goOnWithoutWorker(error.what());
    }
}

void sonivexFilter::goOnWithoutWorker(const char* reason) {
    mIsWithoutThread = true;
    __log_print(
        LOG_ERROR, kFilterName,
        "sonivex: cannot start the worker thread (%s); push processes frames on the player's thread until "
        "a later init starts the worker",
        reason);
}

bool sonivexFilter::worksInsidePush() const {
    return !mActive || mIsWithoutThread;
}

// Remembers the thread, because a player that works in real time pushes frames that only pass on. Such a push
// makes no call that may wait.
bool sonivexFilter::isReadyToThrow() {
    const std::thread::id this_thread = std::this_thread::get_id();
    if (mReadyThread == this_thread) return true;
    if (!sonivex::prepareToThrow()) return false;
    mReadyThread = this_thread;
    return true;
}

int sonivexFilter::push(std::unique_ptr<IQFFrame>& frame, uint64_t) {
    int result = kTryAgain;
    if (mInQueue.sizeForProducer() <= kMaxWaitingForWorker &&
        mOutQueue.sizeForConsumer() <= kMaxWaitingForPull && mInQueue.push(frame.get())) {
        (void)frame.release();  // the queue owns it now
        result = kSuccess;
    }
    // Frames wait until the thread can throw, as they do in `runWorker`.
    if (worksInsidePush() && isReadyToThrow()) FilterLoop();
    return result;
}

int sonivexFilter::pull(std::unique_ptr<IQFFrame>& frame, uint64_t) {
    IQFFrame* oldest = nullptr;
    if (!mOutQueue.pop(oldest)) return kTryAgain;
    frame.reset(oldest);
    return kSuccess;
}

void sonivexFilter::flush() {
    if (mThread) mThread->pause();
    for (SpscQueue<IQFFrame*>* queue : {&mInQueue, &mOutQueue}) {
        IQFFrame* frame = nullptr;
        while (queue->pop(frame)) delete frame;
    }
    freeInputGraph();
    mHasStream = false;
    releaseHandles();
    freeOutputGraph();
    mSrcFormat = -1;
    mOutChannels = -1;
    closeDumpFiles();
    if (mThread) mThread->start();
    mCostSum = 0;
    mCostWindow.clear();
}

std::string sonivexFilter::getName() {
    return kFilterName;
}

bool sonivexFilter::is_supported(const std::string& name, int, int, int) {
    return std::find(mSupportedNames.begin(), mSupportedNames.end(), name) != mSupportedNames.end();
}

IAudioFilter* sonivexFilter::clone(IQFFrame::audioInfo src, IQFFrame::audioInfo dst, bool active) {
    try {
        if (sonivex::prepareToThrow()) return new sonivexFilter(src, dst, active);
    } catch (const std::bad_alloc&) {  // is reported below
    }
    __log_print(LOG_ERROR, kFilterName, "sonivex: no memory for a filter");
    return nullptr;
}

void sonivexFilter::setCurrentTarget(const std::string& target) {
    try {
        if (isReadyToThrow()) {
            mCurrentTarget = target;
            return;
        }
    } catch (const std::bad_alloc&) {  // is reported below
    }
    __log_print(LOG_WARNING, kFilterName, "sonivex: no memory for the name of the target");
}

}  // namespace Vorlin
