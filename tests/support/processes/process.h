#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace test {

struct ProcessResult {
    int exit_code = -1;  // -1 if a signal ended the process
    int signal = 0;      // signal that ended the process, or 0
    std::string out;     // its whole standard output
    std::string err;     // its whole standard error
};

struct ProcessOptions {
    std::optional<uint64_t> file_size_limit_bytes;  // RLIMIT_FSIZE of the program
    std::string working_folder;                     // empty: the folder of the test
};

/** A running program with an empty standard input. The destructor kills it if it still runs. */
class Process {
  public:
    /** @param command path of the program, or a name to search for in PATH, followed by its arguments. */
    explicit Process(const std::vector<std::string>& command, const ProcessOptions& options = {});
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    bool isRunning();
    /** Returns true if the program has installed a handler for `signal`, according to the kernel. */
    bool handles(int signal) const;
    void send(int signal) const;

    /** Stops the program and then the programs that it has started. Returns when all of their threads stand
     *  still. A program that ends meanwhile counts as still. */
    void pause();
    /** Lets all of them go on that are left. */
    void resume();

    /** Waits for the end of the program. Kills it after `limit`; the result then holds SIGKILL. */
    ProcessResult wait(std::chrono::seconds limit = std::chrono::seconds(60));

  private:
    bool reap(bool block);

    pid_t pid_ = -1;
    bool has_ended_ = false;
    int status_ = 0;
    std::vector<pid_t> paused_;
    int out_ = -1;  // descriptors of unlinked temporary files
    int err_ = -1;
};

/** Runs a program to its end. */
ProcessResult runProcess(const std::vector<std::string>& command, const ProcessOptions& options = {});

/** Returns the processes that any thread of `process` has started and that nobody has waited for yet; none if
 *  `process` is gone. */
std::vector<pid_t> childrenOf(pid_t process);

/** Returns the number of open file descriptors of this process. */
int openDescriptors();

}  // namespace test
