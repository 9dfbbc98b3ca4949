#include "result_stream.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "failure.h"

namespace sonivex_tool {

ResultStream::ResultStream(Prints prints) : descriptor_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)) {
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
    if (descriptor_ >= 0) close(descriptor_);
}

void ResultStream::write(const std::string& text) {
    size_t written = 0;
    while (written < text.size()) {
        const ssize_t count = ::write(descriptor_, text.data() + written, text.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) {
            throw Failure(ExitCode::Internal,
                          std::string("cannot write to standard output: ") + std::strerror(errno));
        }
        written += static_cast<size_t>(count);
    }
}

}  // namespace sonivex_tool
