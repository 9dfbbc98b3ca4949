#include "sonivex/log_bridge.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr std::size_t kLineBytes = 2048;

using LogWriter = void (*)(const char*, int);

#if defined(__wasm__)
// WebAssembly checks the type of every function that is called through a pointer.
void writeLine(const char* line, int /* length */) {
    logWrite(line);
}
#endif

}  // namespace

#if defined(__wasm__)
LogWriter logWriterFun = writeLine;
#else
using AnyFunction = void (*)();
// logWrite takes one parameter fewer than a writer and returns a value. In the C calling conventions of all
// supported machines the caller cleans up, so the extra argument and the unused result are harmless.
void (*logWriterFun)(const char* line,
                     int length) = reinterpret_cast<LogWriter>(reinterpret_cast<AnyFunction>(&logWrite));
#endif

int logWrite(const char* line) {
    return std::printf("%s", line);
}

#if defined(__clang__)
// The type of the default writer differs from that of the pointer, see above.
__attribute__((no_sanitize("function")))
#endif
void ZubrelAem_logTrace(const char* prefix, const char* format, ...) {
    if (prefix == nullptr || format == nullptr) return;

    const std::size_t prefix_bytes = std::strlen(prefix);
    if (prefix_bytes > kLineBytes) {
        std::fprintf(stderr, "ZubrelAem_logTrace: a prefix of %zu bytes does not fit a line of %zu\n",
                     prefix_bytes, kLineBytes);
        std::abort();
    }

    char line[kLineBytes] = {};
    std::memcpy(line, prefix, prefix_bytes);

    std::va_list arguments;
    va_start(arguments, format);
    const int message_bytes =
        std::vsnprintf(line + prefix_bytes, kLineBytes - prefix_bytes, format, arguments);
    va_end(arguments);

    // vsnprintf writes no terminator if there is no room, and leaves unspecified bytes after an error.
    line[kLineBytes - 1] = '\0';
    if (message_bytes < 0 && prefix_bytes < kLineBytes) line[prefix_bytes] = '\0';

    if (const LogWriter writer = logWriterFun; writer != nullptr) {
        writer(line, static_cast<int>(std::strlen(line)));
    }
}
