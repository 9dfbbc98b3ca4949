#include "vorlin/thread.h"

#include <pthread.h>
#include <time.h>

#include <condition_variable>
#include <mutex>
#include <new>
#include <thread>
#include <type_traits>
#include <utility>

namespace Vorlin {

namespace {

using std::chrono::nanoseconds;

nanoseconds readClock(clockid_t clock) {
    timespec time{};
    if (clock_gettime(clock, &time) != 0) return {};
    return std::chrono::seconds(time.tv_sec) + nanoseconds(time.tv_nsec);
}

// Sums the processor time over all system threads that one qfThread has had, one after the other.
class WorkerClock final : public qfThreadClock {
  public:
    nanoseconds cpuTime() const override {
        const std::lock_guard lock(mMutex);
        return mIsRunning ? mEnded + readClock(mClock) : mEnded;
    }

    // Makes the calling thread the worker.
    void attach() {
        const std::lock_guard lock(mMutex);
        mIsRunning = pthread_getcpuclockid(pthread_self(), &mClock) == 0;
    }

    // The worker calls this before it ends. Its clock must not be read after that, because a later thread may
    // get the same id.
    void detach() {
        const std::lock_guard lock(mMutex);
        if (mIsRunning) mEnded += readClock(mClock);
        mIsRunning = false;
    }

  private:
    mutable std::mutex mMutex;
    clockid_t mClock = 0;
    bool mIsRunning = false;
    nanoseconds mEnded{};
};

// Keeps for each thread the clock of the qfThread that it made last. A thread_local variable cannot: the C
// library ends the process if it has no memory to remember the variable's destructor. The key is never
// deleted, because threads may make and end workers while the program's globals are destroyed.
class NewestClocks {
  public:
    using Clock = std::shared_ptr<const qfThreadClock>;

    NewestClocks() : mHasKey(pthread_key_create(&mKey, destroy) == 0) {}
    NewestClocks(const NewestClocks&) = delete;
    NewestClocks& operator=(const NewestClocks&) = delete;

    Clock ofThisThread() const {
        const Clock* const clock = mine();
        return clock != nullptr ? *clock : nullptr;
    }

    // Does nothing if the program had used up its keys: the thread works without its clock.
    // @throws std::bad_alloc
    void keep(Clock clock) const {
        if (!mHasKey) return;
        if (Clock* const kept = mine(); kept != nullptr) {
            *kept = std::move(clock);
            return;
        }
        auto fresh = std::make_unique<Clock>(std::move(clock));
        if (pthread_setspecific(mKey, fresh.get()) != 0) throw std::bad_alloc();
        (void)fresh.release();  // `destroy` gets it when the thread ends
    }

  private:
    static void destroy(void* clock) { delete static_cast<Clock*>(clock); }
    Clock* mine() const { return mHasKey ? static_cast<Clock*>(pthread_getspecific(mKey)) : nullptr; }

    pthread_key_t mKey{};
    const bool mHasKey;
};

const NewestClocks kNewestClocks;
static_assert(std::is_trivially_destructible_v<NewestClocks>,
              "nothing destroys it at the end of the program");

void nameThisThread(const std::string& name) {
    constexpr size_t kLongestNameBytes = 15;
    pthread_setname_np(pthread_self(), name.substr(0, kLongestNameBytes).c_str());
}

}  // namespace

qfThreadClock::~qfThreadClock() = default;

// The state is shared with the worker, so that a body may destroy its own qfThread.
struct qfThread::State {
    enum class Request { Pause, Run, Stop };

    State(std::function<int()> thread_body, std::string thread_name)
        : body(std::move(thread_body)), name(std::move(thread_name)) {}

    const std::function<int()> body;
    const std::string name;
    const std::shared_ptr<WorkerClock> clock = std::make_shared<WorkerClock>();

    std::mutex mutex;  // guards the members below
    std::condition_variable changed;
    Request request = Request::Pause;
    bool body_runs = false;
    std::thread thread;

    bool isCalledByWorker() const { return thread.get_id() == std::this_thread::get_id(); }

    void run() {
        nameThisThread(name);
        clock->attach();
        std::unique_lock lock(mutex);
        for (;;) {
            changed.wait(lock, [this] { return request != Request::Pause; });
            if (request == Request::Stop) break;
            body_runs = true;
            lock.unlock();
            body();
            lock.lock();
            body_runs = false;
            if (request != Request::Run) changed.notify_all();
        }
        lock.unlock();
        clock->detach();
    }
};

qfThread::qfThread(std::function<int()> body, const std::string& name)
    : mState(std::make_shared<State>(std::move(body), name)) {
    kNewestClocks.keep(mState->clock);
}

qfThread::~qfThread() {
    stop();
    if (mState->thread.joinable()) mState->thread.detach();  // the body destroys its own qfThread
}

void qfThread::start() {
    std::unique_lock lock(mState->mutex);
    if (mState->request == State::Request::Stop && mState->thread.joinable()) {  // the body called `stop`
        lock.unlock();
        mState->thread.join();
        lock.lock();
    }
    if (!mState->thread.joinable()) {
        mState->thread = std::thread([state = mState] { state->run(); });  // waits for `lock`
    }
    mState->request = State::Request::Run;
    mState->changed.notify_all();
}

void qfThread::pause() {
    std::unique_lock lock(mState->mutex);
    if (mState->request == State::Request::Run) mState->request = State::Request::Pause;
    if (mState->isCalledByWorker()) return;
    mState->changed.wait(lock, [this] { return !mState->body_runs; });
}

void qfThread::stop() {
    {
        const std::lock_guard lock(mState->mutex);
        mState->request = State::Request::Stop;
        mState->changed.notify_all();
        if (mState->isCalledByWorker()) return;
    }
    if (mState->thread.joinable()) mState->thread.join();
}

std::shared_ptr<const qfThreadClock> qfThread::clock() const {
    return mState->clock;
}

std::shared_ptr<const qfThreadClock> qfThread::clockOfNewest() {
    return kNewestClocks.ofThisThread();
}

}  // namespace Vorlin

void qf_msleep(int64_t milliseconds) {
    if (milliseconds > 0) std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}
