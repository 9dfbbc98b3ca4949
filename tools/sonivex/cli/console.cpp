#include "console.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace sonivex_tool {
namespace {

constexpr std::chrono::milliseconds kBarPeriod{100};
constexpr std::chrono::seconds kLinePeriod{5};
constexpr int kWidestBar = 40;
constexpr int kTextBesideBar = 36;

int terminalColumns() {
    winsize size{};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
    return 80;
}

void printLine(const std::string& line) {
    (void)std::fprintf(stderr, "%s\n", line.c_str());
}

std::string rounded(double number) {
    return std::to_string(std::llround(number));
}

std::string speedText(double seconds, std::chrono::steady_clock::duration since) {
    const double elapsed = std::chrono::duration<double>(since).count();
    return elapsed > 0.0 ? rounded(seconds / elapsed) + " x real time" : std::string();
}

}  // namespace

std::string clockTime(double seconds) {
    const auto whole = static_cast<long long>(std::floor(std::max(seconds, 0.0)));
    std::array<char, 64> text{};
    if (whole >= 3600) {
        (void)std::snprintf(text.data(), text.size(), "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60,
                            whole % 60);
    } else {
        (void)std::snprintf(text.data(), text.size(), "%lld:%02lld", whole / 60, whole % 60);
    }
    return text.data();
}

void printError(std::string_view line) {
    (void)std::fprintf(stderr, "sonivex: %.*s\n", static_cast<int>(line.size()), line.data());
}

Console::Console(bool quiet)
    : quiet_(quiet), is_terminal_(isatty(STDERR_FILENO) != 0), last_shown_(Clock::now()) {}

void Console::note(const std::string& line) {
    if (quiet_) return;
    clearBar();
    printLine(line);
}

bool Console::isDue() {
    if (quiet_) return false;
    const auto now = Clock::now();
    const auto period = is_terminal_ ? Clock::duration(kBarPeriod) : Clock::duration(kLinePeriod);
    if (now - last_shown_ < period) return false;
    last_shown_ = now;
    return true;
}

void Console::progress(double seconds, std::optional<double> total) {
    if (!isDue()) return;
    const std::string speed = speedText(seconds, last_shown_ - started_);
    std::string line = clockTime(seconds);
    if (!is_terminal_) {
        if (total) line.append(" of ").append(clockTime(*total));
        printLine(line + ", " + speed);
        return;
    }
    std::optional<double> done;
    if (total && *total > 0.0) {
        done = seconds / *total;
        line.append("/").append(clockTime(*total));
    }
    drawBar(done, line + "  " + speed);
}

void Console::progress(const FileCounts& files) {
    if (!isDue()) return;
    const std::string total = std::to_string(files.total) + (files.total == 1 ? " file" : " files");
    std::string counts;
    if (files.failed > 0) counts += ", " + std::to_string(files.failed) + " failed";
    if (files.running > 0) counts += ", " + std::to_string(files.running) + " running";
    if (!is_terminal_) {
        printLine(std::to_string(files.done) + " of " + total + counts);
        return;
    }
    std::optional<double> done;
    if (files.total > 0) done = static_cast<double>(files.done) / static_cast<double>(files.total);
    drawBar(done, std::to_string(files.done) + "/" + total + counts);
}

void Console::drawBar(std::optional<double> done, const std::string& text) {
    std::string line;
    if (done) {
        const double part = std::clamp(*done, 0.0, 1.0);
        const int width = std::clamp(terminalColumns() - kTextBesideBar, 0, kWidestBar);
        const auto filled = static_cast<size_t>(part * width);
        std::string bar(static_cast<size_t>(width), ' ');
        bar.replace(0, filled, filled, '=');
        line = "[" + bar + "] " + rounded(std::floor(100.0 * part)) + " %  ";
    }
    (void)std::fprintf(stderr, "\r%s%s\033[K", line.c_str(), text.c_str());
    (void)std::fflush(stderr);
    bar_is_shown_ = true;
}

void Console::clearBar() {
    if (!bar_is_shown_) return;
    (void)std::fputs("\r\033[K", stderr);
    bar_is_shown_ = false;
}

}  // namespace sonivex_tool
