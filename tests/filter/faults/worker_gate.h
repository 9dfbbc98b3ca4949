#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

namespace test {

/** Holds a filter's worker inside a call of the normalizer until the filter waits for the worker, by a pause,
 *  a stop or the end of its thread. What must not happen before then is noted.
 *
 *  Only one may live at a time. It uses the hooks of `engineFaults`. */
class WorkerGate {
  public:
    WorkerGate();
    /** Opens the gate. */
    ~WorkerGate();
    WorkerGate(const WorkerGate&) = delete;
    WorkerGate& operator=(const WorkerGate&) = delete;

    /** Waits until the worker is held. */
    void waitUntilHeld();
    /** Lets the worker go on, now and later. */
    void open();
    /** @return true while the worker is held. */
    bool isHeld();

    /** Notes `event` if the worker is held. */
    void note(const std::string& event);
    /** @return what was noted: releases of a handle or a graph, and events of the test's own. */
    std::vector<std::string> eventsWhileHeld();

  private:
    void hold();

    std::mutex mutex_;
    std::condition_variable changed_;
    bool is_open_ = false;
    bool is_held_ = false;
    std::vector<std::string> events_;
};

}  // namespace test
