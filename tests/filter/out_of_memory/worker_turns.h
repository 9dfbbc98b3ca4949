// Lets a filter's worker run only when a test says so, and its memory fail meanwhile.
//
//     WorkerTurns turns;
//     filter->push(frame, 0);
//     turns.take(&memory);      // the worker takes the frame; requests that it makes count and fail
//     filter->pull(frame, 0);   // the frame is there, or it is lost
#pragma once

#include "failing_calls/failing_memory.h"

namespace test {

/** Stands before the worker's body while it lives. Only one may live at a time, and no filter longer than
 *  it. The worker never sleeps, and flushes and the end of a filter do not wait for a turn. */
class WorkerTurns {
  public:
    WorkerTurns();
    ~WorkerTurns();
    WorkerTurns(const WorkerTurns&) = delete;
    WorkerTurns& operator=(const WorkerTurns&) = delete;

    /** Has the worker's body run once, and waits for its end.
     *  @param memory counts and fails the requests of that run, also those with which a new thread begins;
     *  may be null. */
    static void take(FailingMemory* memory);
};

}  // namespace test
