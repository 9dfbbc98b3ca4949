#include "system_faults.h"

#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "vorlin/thread.h"

namespace test {
namespace {

thread_local SystemFaults* faults_in_force = nullptr;

bool takeOne(int& countdown) {
    if (countdown == 0) return false;
    --countdown;
    return true;
}

}  // namespace

WithSystemFaults::WithSystemFaults() {
    faults_in_force = &faults_;
}

WithSystemFaults::~WithSystemFaults() {
    faults_in_force = nullptr;
}

}  // namespace test

extern "C" {

ssize_t __real_write(int file, const void* data, size_t bytes);
int __real_fsync(int file);
unsigned __real__ZNSt13random_device9_M_getvalEv(void* device);

ssize_t __wrap_write(int file, const void* data, size_t bytes) {
    test::SystemFaults* faults = test::faults_in_force;
    if (faults != nullptr && test::takeOne(faults->writes_to_interrupt)) {
        errno = EINTR;
        return -1;
    }
    if (faults != nullptr && faults->write_error != 0) {
        errno = faults->write_error;
        return -1;
    }
    return __real_write(file, data, bytes);
}

int __wrap_fsync(int file) {
    test::SystemFaults* faults = test::faults_in_force;
    if (faults == nullptr) return __real_fsync(file);
    if (test::takeOne(faults->syncs_to_interrupt)) {
        errno = EINTR;
        return -1;
    }
    ++faults->syncs;
    if (faults->sync_error != 0) {
        errno = faults->sync_error;
        return -1;
    }
    return __real_fsync(file);
}

void __real_qf_msleep(int64_t milliseconds);

void __wrap_qf_msleep(int64_t milliseconds) {
    test::SystemFaults* faults = test::faults_in_force;
    if (faults == nullptr) return __real_qf_msleep(milliseconds);
    ++faults->sleeps;
    faults->slept_ms += milliseconds;
}

void __real__ZN6Vorlin8qfThread5startEv(Vorlin::qfThread* thread);

void __wrap__ZN6Vorlin8qfThread5startEv(Vorlin::qfThread* thread) {
    test::SystemFaults* faults = test::faults_in_force;
    if (faults != nullptr && test::takeOne(faults->threads_to_refuse)) {
        throw std::system_error(EAGAIN, std::generic_category(), "no thread");
    }
    __real__ZN6Vorlin8qfThread5startEv(thread);
}

// A member function takes its object as a plain first argument on every supported system.
unsigned __wrap__ZNSt13random_device9_M_getvalEv(void* device) {
    test::SystemFaults* faults = test::faults_in_force;
    if (faults != nullptr && faults->has_no_randomness) throw std::runtime_error("no randomness");
    if (faults != nullptr && !faults->random_numbers.empty()) {
        const uint32_t number = faults->random_numbers.front();
        faults->random_numbers.pop_front();
        return number;
    }
    return __real__ZNSt13random_device9_M_getvalEv(device);
}
}
