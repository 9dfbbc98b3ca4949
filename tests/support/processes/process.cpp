#include "support/processes/process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>
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

// Returns true if no thread of a process can run: each is stopped, or has ended.
bool standsStill(pid_t process) {
    std::error_code gone;
    const std::filesystem::path tasks = "/proc/" + std::to_string(process) + "/task";
    for (const auto& task : std::filesystem::directory_iterator(tasks, gone)) {
        std::ifstream file(task.path() / "stat");
        std::string line;
        std::getline(file, line);
        const size_t name_end = line.rfind(')');  // the state follows the name in brackets
        if (name_end != std::string::npos && std::string("TZX").find(line[name_end + 2]) == std::string::npos)
            return false;
    }
    return true;
}

// Runs in the child, so it makes only calls that are safe after fork.
[[noreturn]] void becomeProgram(char* const* arguments, const ProcessOptions& options, int out, int err) {
    const int nothing = open("/dev/null", O_RDONLY);
    dup2(nothing, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    if (options.file_size_limit_bytes) {
        const rlimit limit{*options.file_size_limit_bytes, *options.file_size_limit_bytes};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    if (!options.working_folder.empty() && chdir(options.working_folder.c_str()) != 0) _exit(kCouldNotStart);
    execvp(arguments[0], arguments);
    _exit(kCouldNotStart);
}

}  // namespace

Process::Process(const std::vector<std::string>& command, const ProcessOptions& options)
    : out_(unnamedFile()), err_(unnamedFile()) {
    std::vector<std::string> copies = command;
    std::vector<char*> arguments;
    for (std::string& argument : copies) arguments.push_back(argument.data());
    arguments.push_back(nullptr);
    pid_ = fork();
    if (pid_ < 0) throw std::system_error(errno, std::generic_category(), "fork");
    if (pid_ == 0) becomeProgram(arguments.data(), options, out_, err_);
}

Process::~Process() {
    if (!has_ended_) {
        send(SIGKILL);
        reap(true);
    }
    close(out_);
    close(err_);
}

bool Process::reap(bool block) {
    if (has_ended_) return true;
    pid_t ended = -1;
    do {
        ended = waitpid(pid_, &status_, block ? 0 : WNOHANG);
    } while (ended < 0 && errno == EINTR);
    has_ended_ = ended != 0;
    return has_ended_;
}

bool Process::isRunning() {
    return !reap(false);
}

bool Process::handles(int signal) const {
    std::ifstream status("/proc/" + std::to_string(pid_) + "/status");
    for (std::string line; std::getline(status, line);) {
        if (line.rfind("SigCgt:", 0) != 0) continue;
        const unsigned long long caught = std::stoull(line.substr(7), nullptr, 16);
        return (caught >> (signal - 1) & 1) != 0;
    }
    return false;
}

void Process::send(int signal) const {
    if (!has_ended_) kill(pid_, signal);
}

void Process::pause() {
    const auto stop = [this](pid_t process) {
        kill(process, SIGSTOP);
        paused_.push_back(process);
        while (!standsStill(process)) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    };
    stop(pid_);
    for (const pid_t child : childrenOf(pid_)) stop(child);
}

void Process::resume() {
    for (const pid_t process : paused_) {
        if (process != pid_ || !has_ended_) kill(process, SIGCONT);
    }
    paused_.clear();
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
    if (WIFEXITED(status_)) result.exit_code = WEXITSTATUS(status_);
    if (WIFSIGNALED(status_)) result.signal = WTERMSIG(status_);
    result.out = contentsOf(out_);
    result.err = contentsOf(err_);
    return result;
}

ProcessResult runProcess(const std::vector<std::string>& command, const ProcessOptions& options) {
    return Process(command, options).wait();
}

std::vector<pid_t> childrenOf(pid_t process) {
    std::vector<pid_t> children;
    std::error_code gone;
    const std::filesystem::path tasks = "/proc/" + std::to_string(process) + "/task";
    for (const auto& task : std::filesystem::directory_iterator(tasks, gone)) {
        std::ifstream list(task.path() / "children");
        for (pid_t child = 0; list >> child;) children.push_back(child);
    }
    return children;
}

int openDescriptors() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<int>(std::distance(begin(descriptors), end(descriptors))) - 1;  // one reads the folder
}

}  // namespace test
