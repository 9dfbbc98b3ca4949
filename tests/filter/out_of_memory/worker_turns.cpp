#include "filter/out_of_memory/worker_turns.h"

#include <condition_variable>
#include <mutex>

#include "SonivexFilter.h"

namespace test {
namespace {

/** The state of all turns. Nothing here asks for memory. */
struct Turns {
    std::mutex mutex;
    std::condition_variable changed;
    bool are_in_force = false;
    bool is_someone_waiting_for_worker = false;  // a flush or the end of a filter
    bool is_due = false;
    bool is_over = false;
    FailingMemory* memory = nullptr;
};

Turns turns;

}  // namespace

WorkerTurns::WorkerTurns() {
    const std::lock_guard lock(turns.mutex);
    turns.are_in_force = true;
}

WorkerTurns::~WorkerTurns() {
    const std::lock_guard lock(turns.mutex);
    turns.are_in_force = false;
    turns.changed.notify_all();
}

void WorkerTurns::take(FailingMemory* memory) {
    std::unique_lock lock(turns.mutex);
    turns.memory = memory;
    turns.is_over = false;
    turns.is_due = true;
    turns.changed.notify_all();
    turns.changed.wait(lock, [] { return turns.is_over; });
}

/** Lets the worker go while the player's thread waits for it. */
class PlayerWaits {
  public:
    PlayerWaits() { set(true); }
    ~PlayerWaits() { set(false); }
    PlayerWaits(const PlayerWaits&) = delete;
    PlayerWaits& operator=(const PlayerWaits&) = delete;

  private:
    static void set(bool is_waiting) {
        const std::lock_guard lock(turns.mutex);
        turns.is_someone_waiting_for_worker = is_waiting;
        turns.changed.notify_all();
    }
};

}  // namespace test

// A member function takes its object as a plain first argument on every supported system.
extern "C" {

int __real__ZN6Vorlin13sonivexFilter9runWorkerEv(Vorlin::sonivexFilter* filter);
void __real__ZN6Vorlin8qfThread5pauseEv(Vorlin::qfThread* thread);
void __real__ZN6Vorlin8qfThread4stopEv(Vorlin::qfThread* thread);

int __wrap__ZN6Vorlin13sonivexFilter9runWorkerEv(Vorlin::sonivexFilter* filter) {
    using test::turns;
    test::FailingMemory* memory = nullptr;
    {
        std::unique_lock lock(turns.mutex);
        turns.changed.wait(
            lock, [] { return turns.is_due || turns.is_someone_waiting_for_worker || !turns.are_in_force; });
        if (!turns.is_due) return 0;
        turns.is_due = false;
        memory = turns.memory;
    }
    const auto work = [filter] { return __real__ZN6Vorlin13sonivexFilter9runWorkerEv(filter); };
    const int result = memory != nullptr ? memory->during(work) : work();
    const std::lock_guard lock(turns.mutex);
    turns.is_over = true;
    turns.changed.notify_all();
    return result;
}

void __wrap__ZN6Vorlin8qfThread5pauseEv(Vorlin::qfThread* thread) {
    const test::PlayerWaits waits;
    __real__ZN6Vorlin8qfThread5pauseEv(thread);
}

void __wrap__ZN6Vorlin8qfThread4stopEv(Vorlin::qfThread* thread) {
    const test::PlayerWaits waits;
    __real__ZN6Vorlin8qfThread4stopEv(thread);
}

// Turns replace the rests between two runs.
void __wrap_qf_msleep(int64_t /*milliseconds*/) {}
}
