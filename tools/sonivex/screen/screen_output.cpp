#include "screen_output.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>

namespace sonivex_tool {
namespace {

constexpr std::chrono::milliseconds kLastWait{300};
constexpr int kPoll_ms = 20;

int openAnew(int terminal) {
    if (terminal < 0) return -1;
    constexpr int kFlags = O_WRONLY | O_NOCTTY | O_NONBLOCK | O_CLOEXEC;
    // The controlling terminal may be opened by this name even if another user owns its file.
    if (tcgetpgrp(terminal) >= 0) {
        const int descriptor = open("/dev/tty", kFlags);
        if (descriptor >= 0) return descriptor;
    }
    std::array<char, PATH_MAX> name{};
    return ttyname_r(terminal, name.data(), name.size()) == 0 ? open(name.data(), kFlags) : -1;
}

}  // namespace

ScreenOutput::ScreenOutput(int terminal) : descriptor_(openAnew(terminal)) {}

ScreenOutput::~ScreenOutput() {
    if (isOpen()) (void)close(descriptor_);
}

// Returns true if nothing is left.
bool ScreenOutput::writeRest() {
    while (!rest_.empty()) {
        const ssize_t written = write(descriptor_, rest_.data(), rest_.size());
        if (written > 0) {
            rest_.erase(0, static_cast<size_t>(written));
        } else if (written == 0 || errno == EAGAIN) {
            return false;
        } else if (errno != EINTR) {
            rest_.clear();  // the terminal is gone, which its keys tell
        }
    }
    return true;
}

void ScreenOutput::show(const std::string& text) {
    if (!isOpen() || !writeRest()) return;
    rest_ = text;
    (void)writeRest();
}

bool ScreenOutput::finish(const std::string& text) {
    if (!isOpen()) return true;
    rest_ += text;
    const auto end = std::chrono::steady_clock::now() + kLastWait;
    while (!writeRest()) {
        if (std::chrono::steady_clock::now() >= end) return false;
        pollfd waiting{.fd = descriptor_, .events = POLLOUT, .revents = 0};
        (void)poll(&waiting, 1, kPoll_ms);
    }
    return true;
}

}  // namespace sonivex_tool
