#include "vorlin/log.h"

#include <atomic>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <utility>

namespace Vorlin {

namespace {

std::atomic<int> threshold{LOG_QUIET};

struct SinkSlot {
    std::mutex mutex;
    std::shared_ptr<const LogSink> sink;  // null: standard error
};

// The slot is never destroyed, because a worker may log until the very end of the program.
SinkSlot& sinkSlot() {
    static SinkSlot& instance = *new SinkSlot;
    return instance;
}

void writeToStandardError(const std::string& tag, const std::string& message) {
    // The line is written in one call, so that lines of two threads do not mix.
    const std::string line = tag + ": " + message + "\n";
    std::fwrite(line.data(), 1, line.size(), stderr);
}

// Runs the sink outside the mutex, so that the sink may log or replace itself.
void deliver(int level, const std::string& tag, const std::string& message) {
    std::shared_ptr<const LogSink> sink;
    {
        SinkSlot& slot = sinkSlot();
        const std::lock_guard lock(slot.mutex);
        sink = slot.sink;
    }
    if (sink) {
        (*sink)(level, tag, message);
    } else {
        writeToStandardError(tag, message);
    }
}

// Returns whether a message may be made, which throws without memory. The first exception of a thread needs
// some itself, and the loader ends a program in C that has none then.
bool hasMemoryToThrow() {
    constexpr std::size_t kRoom_bytes = 4096;
    void* const room = std::malloc(kRoom_bytes);
    asm volatile("" : : "r"(room) : "memory");  // keeps the compiler from leaving the question out
    std::free(room);
    return room != nullptr;
}

__attribute__((format(printf, 1, 0))) std::string formatMessage(const char* format, va_list arguments) {
    va_list measured;
    va_copy(measured, arguments);
    // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the analyzer does not see through va_copy
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    if (length < 0) return format;  // the arguments cannot be formatted; the bare format still helps

    std::string message(static_cast<size_t>(length), '\0');
    std::vsnprintf(message.data(), message.size() + 1, format, arguments);
    if (message.ends_with('\n')) message.pop_back();
    return message;
}

}  // namespace

void setLogLevel(int level) {
    threshold.store(level, std::memory_order_relaxed);
}

void setLogSink(LogSink sink) {
    auto replacement = sink ? std::make_shared<const LogSink>(std::move(sink)) : nullptr;
    SinkSlot& slot = sinkSlot();
    {
        const std::lock_guard lock(slot.mutex);
        slot.sink.swap(replacement);
    }
    // The former sink dies here, outside the mutex, because its destructor may log.
}

}  // namespace Vorlin

void __log_print(int level, const char* tag, const char* format, ...) {
    if (level > Vorlin::threshold.load(std::memory_order_relaxed) || format == nullptr) return;
    if (!Vorlin::hasMemoryToThrow()) return;
    va_list arguments;
    va_start(arguments, format);
    try {
        Vorlin::deliver(level, tag != nullptr ? tag : "", Vorlin::formatMessage(format, arguments));
    } catch (...) {  // NOLINT(bugprone-empty-catch): a lost message is better than a lost player
    }
    va_end(arguments);
}
