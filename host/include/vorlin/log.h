#pragma once

#include <functional>
#include <string>

#include "vorlin/api.h"

namespace Vorlin {

/** The levels of `__log_print`. A smaller number is more urgent. */
enum LogLevel : int {
    LOG_QUIET = -8,  // as a threshold: nothing is logged
    LOG_ERROR = 16,
    LOG_WARNING = 24,
    LOG_INFO = 32,
    LOG_DEBUG = 48,
};

/** Receives a finished message, without its trailing newline, on the thread that logs it. */
using LogSink = std::function<void(int level, const std::string& tag, const std::string& message)>;

/** Lets messages of level `threshold` and more urgent ones through. The default is LOG_QUIET, because a
 *  library logs nothing unless its program asks for it. [any, concurrent] real-time safe */
VORLIN_API void setLogLevel(int threshold);

/** Replaces the sink. An empty one restores the default, which writes "tag: message" lines to standard error.
 *  A message that is being logged on another thread may still reach the former sink.
 *  [any, concurrent] not real-time safe: takes a lock, allocates */
VORLIN_API void setLogSink(LogSink sink);

}  // namespace Vorlin

/** Logs a message; `format` is that of printf. It never throws.
 *  [any, concurrent] real-time safe for a message that the threshold holds back, which costs one atomic load;
 *  otherwise not: takes a lock, allocates, runs the sink */
extern "C" VORLIN_API void __log_print(  // NOLINT(bugprone-reserved-identifier): given by the framework
    int level, const char* tag, const char* format, ...) __attribute__((format(printf, 3, 4)));
