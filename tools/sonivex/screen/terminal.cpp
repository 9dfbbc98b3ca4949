#include "terminal.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <string_view>

#include "failure.h"
#include "interrupt.h"

namespace sonivex_tool {
namespace {

constexpr std::string_view kEnterScreen = "\033[?1049h\033[?25l\033[2J";
constexpr std::string_view kLeaveScreen = "\033[?25h\033[?1049l";
constexpr int kUsualColumns = 80;
constexpr int kUsualRows = 24;

// A signal handler needs these to give the terminal back. They are set before the handler can run.
int g_keys = -1;
int g_screen = -1;
termios g_original{};
// The handler may run while this one is set, which is why it is atomic.
std::atomic<int> g_kept_errors = -1;
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may only use lock-free atomics");

// Calls only async-signal-safe functions. None of them waits. Standard error stays silent if the terminal
// takes no output, so that the program's last words do not wait for it either.
void giveBackAtOnce() {
    if (g_keys >= 0) (void)tcsetattr(g_keys, TCSANOW, &g_original);
    if (g_screen < 0) return;
    const bool takes_output = write(g_screen, kLeaveScreen.data(), kLeaveScreen.size()) > 0;
    if (takes_output && g_kept_errors >= 0) (void)dup2(g_kept_errors, STDERR_FILENO);
}

winsize sizeOf(int descriptor) {
    winsize size{};
    if (ioctl(descriptor, TIOCGWINSZ, &size) != 0) size = {};
    if (size.ws_col == 0) size.ws_col = kUsualColumns;
    if (size.ws_row == 0) size.ws_row = kUsualRows;
    return size;
}

}  // namespace

Terminal::Terminal(int keys, int screen, TerminalUse use)
    : keys_(keys), screen_(screen), output_(use == TerminalUse::KeysAndScreen ? screen : -1) {
    if (tcgetattr(keys_, &g_original) != 0)
        throw Failure(ExitCode::Internal, "cannot read keys: standard input is not a terminal");
    g_keys = keys_;
    g_screen = output_.descriptor();
    onSecondSignal(&giveBackAtOnce);
    termios settings = g_original;
    settings.c_iflag &= ~static_cast<tcflag_t>(IXON);
    settings.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
    settings.c_cc[VMIN] = 0;
    settings.c_cc[VTIME] = 0;
    settings.c_cc[VSUSP] = _POSIX_VDISABLE;
    settings.c_cc[VQUIT] = _POSIX_VDISABLE;
    (void)tcsetattr(keys_, TCSANOW, &settings);
    if (!hasScreen()) return;
    output_.show(std::string(kEnterScreen));
    if (isatty(STDERR_FILENO) == 0) return;
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (nowhere < 0) return;
    kept_errors_ = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    g_kept_errors = kept_errors_;
    if (kept_errors_ >= 0) (void)dup2(nowhere, STDERR_FILENO);
    (void)close(nowhere);
}

Terminal::~Terminal() {
    (void)giveBack();
}

bool Terminal::giveBack() {
    if (is_given_back_) return true;
    is_given_back_ = true;
    onSecondSignal(nullptr);
    (void)tcsetattr(keys_, TCSANOW, &g_original);
    const bool takes_output = output_.finish(std::string(kLeaveScreen));
    if (kept_errors_ >= 0) {
        if (takes_output) (void)dup2(kept_errors_, STDERR_FILENO);
        g_kept_errors = -1;
        (void)close(kept_errors_);
    }
    g_keys = -1;
    g_screen = -1;
    return takes_output;
}

void Terminal::draw(const std::vector<std::string>& lines) {
    std::string bytes = "\033[H";
    for (size_t i = 0; i < lines.size(); ++i) {
        if (i > 0) bytes += "\r\n";
        bytes += lines[i] + "\033[K";
    }
    bytes += "\033[J";
    output_.show(bytes);
}

int Terminal::columns() const {
    return sizeOf(screen_).ws_col;
}

int Terminal::rows() const {
    return sizeOf(screen_).ws_row;
}

std::string Terminal::read(int timeout_ms) {
    pollfd waiting{.fd = keys_, .events = POLLIN, .revents = 0};
    if (poll(&waiting, 1, timeout_ms) <= 0) return {};
    if ((waiting.revents & POLLIN) == 0) {
        has_ended_ = true;
        return {};
    }
    std::array<char, 256> bytes{};
    const ssize_t count = ::read(keys_, bytes.data(), bytes.size());
    if (count > 0) return {bytes.data(), static_cast<size_t>(count)};
    if (count == 0 || (errno != EINTR && errno != EAGAIN)) has_ended_ = true;
    return {};
}

bool isInForeground(int terminal) {
    // A terminal that does not control this program has no group for it, and stops nobody.
    const pid_t group = tcgetpgrp(terminal);
    return group < 0 || group == getpgrp();
}

}  // namespace sonivex_tool
