#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "vorlin/api.h"

namespace Vorlin {

/** Reads the processor time of a qfThread; outlives the thread and then stands still. */
class VORLIN_API QfThreadClock {
  public:
    virtual ~QfThreadClock();
    /** Processor time that the thread's body has used since the thread was made. Any thread may ask. */
    virtual std::chrono::nanoseconds cpuTime() const = 0;
};

/** A thread that runs its body over and over while it is started.
 *
 *  `start`, `pause`, `stop` and the destructor are called by one controlling thread. */
class VORLIN_API qfThread {
  public:
    /** @param body runs again and again; its result is ignored and it must not throw.
     *  @param name what the system's tools show (cut to 15 bytes). Nothing runs before `start`. */
    qfThread(std::function<int()> body, const std::string& name);
    qfThread(const qfThread&) = delete;
    qfThread& operator=(const qfThread&) = delete;
    ~qfThread();  // as `stop`

    /** Run, or go on after a pause. Throws std::system_error when the system gives no thread; try again
     *  later. */
    void start();
    /** Returns only when the body is not running; it does not run again before `start`. Asked by the body
     *  itself, it takes effect when the body returns. */
    void pause();
    /** End the thread and wait for it; `start` begins a new one. Asked by the body itself, it takes effect
     *  when the body returns and does not wait. */
    void stop();

    std::shared_ptr<const QfThreadClock> clock() const;

    /** The clock of the qfThread that the calling thread made last, or null. A player brackets a filter's
     *  `init` with it to learn which worker the filter made. */
    static std::shared_ptr<const QfThreadClock> clockOfNewest();

  private:
    struct State;
    std::shared_ptr<State> mState;
};

}  // namespace Vorlin

/** Sleep for `milliseconds`; at 0 and below return at once. */
extern "C" VORLIN_API void qf_msleep(int64_t milliseconds);
