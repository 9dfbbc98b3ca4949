#include "child_process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>
#include <thread>

namespace sonivex_tool {
namespace {

constexpr size_t kMostOutput_bytes = size_t{1} << 20;
constexpr size_t kMostMessages_bytes = size_t{1} << 16;
constexpr std::chrono::milliseconds kFarewellStep{5};
constexpr int kCouldNotStart = 127;

struct Pipe {
    int read_end = -1;
    int write_end = -1;
};

Pipe makePipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) throw std::system_error(errno, std::generic_category(), "pipe");
    (void)::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    return {ends[0], ends[1]};
}

void closeBoth(const Pipe& pipe) {
    ::close(pipe.read_end);
    ::close(pipe.write_end);
}

// Runs in the child, so it makes only calls that are safe after fork.
[[noreturn]] void becomeProgram(char* const* arguments, pid_t parent, int out, int err) {
    (void)::setpgid(0, 0);
    (void)::prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (::getppid() != parent) _exit(kCouldNotStart);  // the parent died before the line above
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGPIPE, SIGXFSZ}) (void)::signal(signal, SIG_DFL);
    const int nothing = ::open("/dev/null", O_RDONLY);
    ::dup2(nothing, STDIN_FILENO);
    ::dup2(out, STDOUT_FILENO);
    ::dup2(err, STDERR_FILENO);
    ::execv("/proc/self/exe", arguments);
    _exit(kCouldNotStart);
}

// Reads what is there. Closes the descriptor at the end of the stream.
template <typename Take>
void drain(int& descriptor, Take take) {
    std::array<char, 4096> piece{};
    while (descriptor >= 0) {
        const ssize_t count = ::read(descriptor, piece.data(), piece.size());
        if (count > 0) {
            take(piece.data(), static_cast<size_t>(count));
        } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
            ::close(descriptor);
            descriptor = -1;
        } else if (errno == EAGAIN) {
            return;
        }
    }
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments,
                           std::chrono::milliseconds longest_farewell)
    : longest_farewell_(longest_farewell) {
    std::vector<std::string> copies = {"sonivex"};
    copies.insert(copies.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    pointers.reserve(copies.size() + 1);
    for (std::string& argument : copies) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    const Pipe out = makePipe();
    Pipe err;
    try {
        err = makePipe();
    } catch (...) {
        closeBoth(out);
        throw;
    }
    const pid_t parent = ::getpid();
    pid_ = ::fork();
    if (pid_ == 0) becomeProgram(pointers.data(), parent, out.write_end, err.write_end);
    const int error_number = errno;
    if (pid_ < 0) {
        closeBoth(out);
        closeBoth(err);
        throw std::system_error(error_number, std::generic_category(), "fork");
    }
    ::close(out.write_end);
    ::close(err.write_end);
    out_descriptor_ = out.read_end;
    err_descriptor_ = err.read_end;
}

ChildProcess::~ChildProcess() {
    if (!has_ended_) endNow();
    for (const int descriptor : {out_descriptor_, err_descriptor_}) {
        if (descriptor >= 0) ::close(descriptor);
    }
}

void ChildProcess::endNow() {
    send(SIGTERM);  // lets it remove its unfinished output
    const auto deadline = std::chrono::steady_clock::now() + longest_farewell_;
    while (!poll()) {
        if (std::chrono::steady_clock::now() > deadline) {
            send(SIGKILL);
            while (::waitpid(pid_, &status_, 0) < 0 && errno == EINTR) {
            }
            return;
        }
        std::this_thread::sleep_for(kFarewellStep);
    }
}

bool ChildProcess::poll() {
    if (has_ended_) return true;
    takeOutput();
    const pid_t ended = ::waitpid(pid_, &status_, WNOHANG);
    has_ended_ = ended == pid_ || (ended < 0 && errno != EINTR);
    if (has_ended_) takeOutput();  // what it wrote between the two lines above
    return has_ended_;
}

void ChildProcess::takeOutput() {
    drain(out_descriptor_, [this](const char* data, size_t bytes) {
        out_.append(data, std::min(bytes, kMostOutput_bytes - out_.size()));
    });
    drain(err_descriptor_, [this](const char* data, size_t bytes) {
        err_.append(data, bytes);
        if (err_.size() > 2 * kMostMessages_bytes) err_.erase(0, err_.size() - kMostMessages_bytes);
    });
}

void ChildProcess::send(int signal) const {
    if (!has_ended_) (void)::kill(pid_, signal);
}

int ChildProcess::readable() const {
    return out_descriptor_ >= 0 ? out_descriptor_ : err_descriptor_;
}

int ChildProcess::exitCode() const {
    constexpr int kSignalBase = 128;
    return WIFSIGNALED(status_) ? kSignalBase + WTERMSIG(status_) : WEXITSTATUS(status_);
}

int ChildProcess::signal() const {
    return WIFSIGNALED(status_) ? WTERMSIG(status_) : 0;
}

}  // namespace sonivex_tool
