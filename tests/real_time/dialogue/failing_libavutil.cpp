#include "failing_libavutil.h"

#include <dlfcn.h>

extern "C" {
#include <libavutil/error.h>
#include <libavutil/mem.h>
#include <libavutil/tx.h>
}

#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace {

bool is_watching = false;
int failing_request = 0;
int requests = 0;
int living = 0;

// Counts a request; true if it is the one to fail.
bool countRequest() {
    return is_watching && ++requests == failing_request;
}

void countMade(bool is_made) {
    if (is_watching && is_made) ++living;
}

void countFreed(bool was_made) {
    if (is_watching && was_made) --living;
}

template <typename Function>
Function libavutils(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

void* av_mallocz(std::size_t bytes) {
    static const auto real = libavutils<void* (*)(std::size_t)>("av_mallocz");
    if (countRequest()) return nullptr;
    void* const memory = real(bytes);
    countMade(memory != nullptr);
    return memory;
}

void av_free(void* memory) {
    static const auto real = libavutils<void (*)(void*)>("av_free");
    countFreed(memory != nullptr);
    real(memory);
}

int av_tx_init(AVTXContext** context, av_tx_fn* run, AVTXType type, int is_inverse, int points,
               const void* scale, std::uint64_t flags) {
    static const auto real = libavutils<decltype(&av_tx_init)>("av_tx_init");
    if (countRequest()) return AVERROR(ENOMEM);
    const int result = real(context, run, type, is_inverse, points, scale, flags);
    countMade(result >= 0);
    return result;
}

void av_tx_uninit(AVTXContext** context) {
    static const auto real = libavutils<decltype(&av_tx_uninit)>("av_tx_uninit");
    countFreed(context != nullptr && *context != nullptr);
    real(context);
}

}  // extern "C"

namespace test {

LibavutilWatch::LibavutilWatch(int failing) {
    failing_request = failing;
    requests = 0;
    living = 0;
    is_watching = true;
}

LibavutilWatch::~LibavutilWatch() {
    is_watching = false;
}

int LibavutilWatch::requested() const {
    return requests;
}
int LibavutilWatch::alive() const {
    return living;
}

}  // namespace test
