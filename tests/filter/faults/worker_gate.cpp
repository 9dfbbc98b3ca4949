#include "worker_gate.h"

extern "C" {
#include <libavfilter/avfilter.h>
}

#include <atomic>

#include "engine_faults.h"
#include "vorlin/thread.h"

namespace test {
namespace {

std::atomic<WorkerGate*> gate_in_force = nullptr;

void openGate() {
    if (WorkerGate* gate = gate_in_force) gate->open();
}

}  // namespace

WorkerGate::WorkerGate() {
    engineFaults().during_process = [this] { hold(); };
    engineFaults().during_release = [this] { note("release of the handle"); };
    gate_in_force = this;
}

WorkerGate::~WorkerGate() {
    open();
    gate_in_force = nullptr;
}

void WorkerGate::hold() {
    std::unique_lock lock(mutex_);
    is_held_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return is_open_; });
    is_held_ = false;
}

void WorkerGate::waitUntilHeld() {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return is_held_; });  // the time limit of the test ends an endless wait
}

void WorkerGate::open() {
    const std::lock_guard lock(mutex_);
    is_open_ = true;
    changed_.notify_all();
}

bool WorkerGate::isHeld() {
    const std::lock_guard lock(mutex_);
    return is_held_;
}

void WorkerGate::note(const std::string& event) {
    const std::lock_guard lock(mutex_);
    if (is_held_) events_.push_back(event);
}

std::vector<std::string> WorkerGate::eventsWhileHeld() {
    const std::lock_guard lock(mutex_);
    return events_;
}

}  // namespace test

// A member function takes its object as a plain first argument on every supported system.
extern "C" {

void __real__ZN6Vorlin8qfThread5pauseEv(Vorlin::qfThread* thread);
void __real__ZN6Vorlin8qfThread4stopEv(Vorlin::qfThread* thread);
void __real__ZN6Vorlin8qfThreadD1Ev(Vorlin::qfThread* thread);
void __real_avfilter_graph_free(AVFilterGraph** graph);

void __wrap__ZN6Vorlin8qfThread5pauseEv(Vorlin::qfThread* thread) {
    test::openGate();
    __real__ZN6Vorlin8qfThread5pauseEv(thread);
}

void __wrap__ZN6Vorlin8qfThread4stopEv(Vorlin::qfThread* thread) {
    test::openGate();
    __real__ZN6Vorlin8qfThread4stopEv(thread);
}

void __wrap__ZN6Vorlin8qfThreadD1Ev(Vorlin::qfThread* thread) {
    test::openGate();
    __real__ZN6Vorlin8qfThreadD1Ev(thread);
}

void __wrap_avfilter_graph_free(AVFilterGraph** graph) {
    test::WorkerGate* gate = test::gate_in_force;
    if (gate != nullptr && *graph != nullptr) gate->note("release of a graph");
    __real_avfilter_graph_free(graph);
}
}
