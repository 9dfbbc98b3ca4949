#pragma once

#include <functional>
#include <string>

#include "vorlin/api.h"

namespace Vorlin {

/** Levels of `__log_print`; a smaller number is more urgent. */
enum LogLevel : int {
    LOG_QUIET = -8,  // as a threshold: nothing is logged
    LOG_ERROR = 16,
    LOG_WARNING = 24,
    LOG_INFO = 32,
    LOG_DEBUG = 48,
};

/** Receives a finished message, without its trailing newline. Called on the thread that logs. */
using LogSink = std::function<void(int level, const std::string& tag, const std::string& message)>;

/** Let messages of `threshold` and more urgent ones through. The default is LOG_QUIET: a library says nothing
 *  unless its program asks. */
VORLIN_API void setLogLevel(int threshold);

/** Replace the sink; an empty one restores the default, which writes "tag: message" lines to standard error.
 *  A message already on its way may still reach the former sink. */
VORLIN_API void setLogSink(LogSink sink);

}  // namespace Vorlin

/** Log a message. Any thread may call; below the threshold it costs one atomic load. Never throws. */
extern "C" VORLIN_API void __log_print(int level, const char* tag, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
