#include "output_pipe.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>

#include "failure.h"
#include "interrupt.h"

namespace sonivex_tool {
namespace {

constexpr int kPollInterval_ms = 100;

}  // namespace

OutputPipe::OutputPipe(int descriptor) : Output("to standard output"), descriptor_(descriptor) {
    if (descriptor < 0) fail(EBADF);
    if (::isatty(descriptor) != 0) {
        throw Failure(ExitCode::OutputNotWritable,
                      "cannot write to standard output: it is a terminal; redirect it to a file or a pipe");
    }
    openIo(nullptr);
}

int OutputPipe::writeAll(const uint8_t* data, size_t bytes) {
    size_t written = 0;
    while (written < bytes) {
        if (pendingSignal() != 0) return remember(EINTR);
        // A pipe that is ready takes PIPE_BUF bytes without blocking, so a signal is noticed in spite of a
        // reader that has stopped reading.
        struct pollfd ready {
            .fd = descriptor_, .events = POLLOUT, .revents = 0
        };
        const int count_ready = ::poll(&ready, 1, kPollInterval_ms);
        if (count_ready == 0 || (count_ready < 0 && errno == EINTR)) continue;
        const ssize_t count =
            ::write(descriptor_, data + written, std::min<size_t>(bytes - written, PIPE_BUF));
        if (count < 0 && (errno == EINTR || errno == EAGAIN)) continue;
        if (count < 0) return remember(errno);
        if (count == 0) return remember(EIO);  // the destination takes nothing and gives no reason
        written += static_cast<size_t>(count);
    }
    return static_cast<int>(bytes);
}

void OutputPipe::commit() {
    avio_flush(io());
    throwIfFailed();
}

}  // namespace sonivex_tool
