#include "result_stream.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "failure.h"
#include "write_errors.h"

namespace sonivex_tool {
namespace {

int g_original_standard_output = STDOUT_FILENO;  // only the main thread changes it

}  // namespace

int originalStandardOutput() {
    return g_original_standard_output;
}

bool namesStandardOutput(const std::string& path) {
    return path == "-" || path == "pipe:1";
}

ResultStream::ResultStream(Prints prints, Results results)
    : standard_output_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)), results_(results) {
    g_original_standard_output = standard_output_;
    (void)std::fflush(stdout);
    int target = -1;
    if (prints == Prints::ToStandardError) target = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
    // If the program has no standard error, the prints are discarded.
    if (target < 0) target = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (target < 0) return;
    dup2(target, STDOUT_FILENO);
    close(target);
}

ResultStream::~ResultStream() {
    (void)std::fflush(stdout);
    g_original_standard_output = -1;
    if (standard_output_ >= 0) close(standard_output_);
}

void ResultStream::write(const std::string& text) {
    if (results_ == Results::ToStandardError) {
        writeToStandard(STDERR_FILENO, "error", text);
    } else {
        writeToStandard(standard_output_, "output", text);
    }
}

void writeToStandard(int descriptor, const char* name, const std::string& text) {
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(descriptor, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) {
            const int error_number = errno;
            const bool is_full = exitCodeOfWriteError(error_number) == ExitCode::NoSpace;
            throw Failure(
                is_full ? ExitCode::NoSpace : ExitCode::Internal,
                std::string("cannot write to standard ") + name + ": " + std::strerror(error_number));
        }
        written += static_cast<size_t>(count);
    }
}

}  // namespace sonivex_tool
