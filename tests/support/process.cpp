#include "support/process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace test {
namespace {

constexpr int kCouldNotStart = 127;

int unnamedFile() {
    std::string name = "/tmp/sonivex-test-XXXXXX";
    const int file = mkostemp(name.data(), O_CLOEXEC);
    if (file < 0) throw std::system_error(errno, std::generic_category(), "mkostemp");
    unlink(name.c_str());
    return file;
}

std::string contentsOf(int file) {
    std::string contents;
    std::array<char, 4096> piece{};
    lseek(file, 0, SEEK_SET);
    ssize_t count = 0;
    while ((count = read(file, piece.data(), piece.size())) > 0)
        contents.append(piece.data(), static_cast<size_t>(count));
    return contents;
}

/** In the child, where only calls that are safe after fork are made. */
[[noreturn]] void becomeProgram(char* const* arguments, const ProcessOptions& options, int out, int err) {
    const int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    if (options.fileSizeLimitBytes) {
        const rlimit limit{*options.fileSizeLimitBytes, *options.fileSizeLimitBytes};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    if (!options.workingFolder.empty() && chdir(options.workingFolder.c_str()) != 0) _exit(kCouldNotStart);
    execvp(arguments[0], arguments);
    _exit(kCouldNotStart);
}

}  // namespace

Process::Process(const std::vector<std::string>& command, const ProcessOptions& options)
    : mOut(unnamedFile()), mErr(unnamedFile()) {
    std::vector<std::string> copies = command;
    std::vector<char*> arguments;
    for (std::string& argument : copies) arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    mPid = fork();
    if (mPid < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (mPid == 0) becomeProgram(arguments.data(), options, mOut, mErr);
}

Process::~Process() {
    if (!mHasEnded) {
        send(SIGKILL);
        reap(true);
    }
    close(mOut);
    close(mErr);
}

bool Process::reap(bool block) {
    if (mHasEnded) return true;
    pid_t ended = -1;
    do {
        ended = waitpid(mPid, &mStatus, block ? 0 : WNOHANG);
    } while (ended < 0 && errno == EINTR);
    mHasEnded = ended != 0;
    return mHasEnded;
}

bool Process::isRunning() {
    return !reap(false);
}

bool Process::handles(int signal) const {
    std::ifstream status("/proc/" + std::to_string(mPid) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("SigCgt:", 0) != 0) continue;
        const unsigned long long caught = std::stoull(line.substr(7), nullptr, 16);
        return (caught >> (signal - 1) & 1) != 0;
    }
    return false;
}

void Process::send(int signal) const {
    if (!mHasEnded) kill(mPid, signal);
}

ProcessResult Process::wait(std::chrono::seconds limit) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!reap(false)) {
        if (std::chrono::steady_clock::now() > deadline) {
            send(SIGKILL);
            reap(true);
            break;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    ProcessResult result;
    if (WIFEXITED(mStatus)) result.exitCode = WEXITSTATUS(mStatus);
    if (WIFSIGNALED(mStatus)) result.signal = WTERMSIG(mStatus);
    result.out = contentsOf(mOut);
    result.err = contentsOf(mErr);
    return result;
}

ProcessResult runProcess(const std::vector<std::string>& command, const ProcessOptions& options) {
    return Process(command, options).wait();
}

}  // namespace test
