#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "vorlin/api.h"

namespace Vorlin {

/** Reads the processor time of a qfThread. It may outlive the thread, and then keeps its last value. */
class VORLIN_API qfThreadClock {
  public:
    /** [any] not real-time safe: frees memory */
    virtual ~qfThreadClock();
    /** @return the processor time that the thread has used since it was made.
     *  [any, concurrent] not real-time safe: takes a lock, makes a system call */
    virtual std::chrono::nanoseconds cpuTime() const = 0;
};

/** A thread that runs its body over and over while it is started.
 *
 *  One controlling thread calls `start`, `pause`, `stop` and the destructor. The body may call `pause` and
 *  `stop` and may destroy the object. */
class VORLIN_API qfThread {
  public:
    /** Makes a thread that does not run before `start`.
     *  @param body runs again and again. Its result is ignored, and it must not throw.
     *  @param name shown by the system's tools, cut to 15 bytes.
     *  @throws std::bad_alloc
     *  [any, concurrent] not real-time safe: allocates */
    qfThread(std::function<int()> body, const std::string& name);
    qfThread(const qfThread&) = delete;
    qfThread& operator=(const qfThread&) = delete;
    /** Stops the thread, as `stop` does. [any] not real-time safe: waits for the body */
    ~qfThread();

    /** Runs the body, for the first time or after a pause.
     *  @throws std::system_error if the system gives no thread; a later call may succeed.
     *  [any] not real-time safe: takes a lock, may start a thread */
    void start();
    /** Waits until the body does not run. It does not run again before `start`. A call from the body itself
     *  does not wait and takes effect when the body returns.
     *  [any] not real-time safe: takes a lock, waits for the body */
    void pause();
    /** Ends the thread and waits for its end; `start` begins a new one. A call from the body itself does not
     *  wait and takes effect when the body returns.
     *  [any] not real-time safe: takes a lock, waits for the body */
    void stop();

    /** @return the clock of this thread, never null. [any, concurrent] real-time safe */
    std::shared_ptr<const qfThreadClock> clock() const;

    /** @return the clock of the qfThread that the calling thread made last, or null. It is always null in a
     *  process that had no key for thread-specific data left when the library was loaded. A player calls this
     *  before and after a filter's `init`, to learn which worker the filter made.
     *  [any, concurrent] real-time safe */
    static std::shared_ptr<const qfThreadClock> clockOfNewest();

  private:
    struct State;
    std::shared_ptr<State> mState;
};

}  // namespace Vorlin

/** Sleeps for `milliseconds`; at 0 and below returns at once. [any, concurrent] not real-time safe: waits */
extern "C" VORLIN_API void qf_msleep(int64_t milliseconds);
