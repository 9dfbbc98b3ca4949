#include "system_faults.h"

#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

#include "vorlin/thread.h"

namespace test {
namespace {

thread_local SystemFaults* faultsInForce = nullptr;

bool takeOne(int& countdown) {
    if (countdown == 0) return false;
    --countdown;
    return true;
}

}  // namespace

WithSystemFaults::WithSystemFaults() {
    faultsInForce = &mFaults;
}

WithSystemFaults::~WithSystemFaults() {
    faultsInForce = nullptr;
}

}  // namespace test

extern "C" {

ssize_t __real_write(int file, const void* data, size_t bytes);
int __real_fsync(int file);
unsigned __real__ZNSt13random_device9_M_getvalEv(void* device);

ssize_t __wrap_write(int file, const void* data, size_t bytes) {
    test::SystemFaults* faults = test::faultsInForce;
    if (faults != nullptr && test::takeOne(faults->writesToInterrupt)) {
        errno = EINTR;
        return -1;
    }
    if (faults != nullptr && faults->writeError != 0) {
        errno = faults->writeError;
        return -1;
    }
    return __real_write(file, data, bytes);
}

int __wrap_fsync(int file) {
    test::SystemFaults* faults = test::faultsInForce;
    if (faults == nullptr) return __real_fsync(file);
    if (test::takeOne(faults->syncsToInterrupt)) {
        errno = EINTR;
        return -1;
    }
    ++faults->syncs;
    if (faults->syncError != 0) {
        errno = faults->syncError;
        return -1;
    }
    return __real_fsync(file);
}

void __real_qf_msleep(int64_t milliseconds);

void __wrap_qf_msleep(int64_t milliseconds) {
    test::SystemFaults* faults = test::faultsInForce;
    if (faults == nullptr) return __real_qf_msleep(milliseconds);
    ++faults->sleeps;
}

void __real__ZN6Vorlin8qfThread5startEv(Vorlin::qfThread* thread);

void __wrap__ZN6Vorlin8qfThread5startEv(Vorlin::qfThread* thread) {
    test::SystemFaults* faults = test::faultsInForce;
    if (faults != nullptr && test::takeOne(faults->threadsToRefuse)) {
        throw std::system_error(EAGAIN, std::generic_category(), "no thread");
    }
    __real__ZN6Vorlin8qfThread5startEv(thread);
}

// A member function takes its object as a plain first argument on every system that this is built for.
unsigned __wrap__ZNSt13random_device9_M_getvalEv(void* device) {
    test::SystemFaults* faults = test::faultsInForce;
    if (faults != nullptr && faults->hasNoRandomness) throw std::runtime_error("no randomness");
    if (faults != nullptr && !faults->randomNumbers.empty()) {
        const uint32_t number = faults->randomNumbers.front();
        faults->randomNumbers.pop_front();
        return number;
    }
    return __real__ZNSt13random_device9_M_getvalEv(device);
}
}
