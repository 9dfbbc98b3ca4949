#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace test {

struct ProcessResult {
    int exit_code = -1;  // -1 when a signal ended the process
    int signal = 0;      // the signal that ended it, or 0
    std::string out;     // all of its standard output
    std::string err;     // all of its standard error
};

struct ProcessOptions {
    std::optional<uint64_t> file_size_limit_bytes;  // as `ulimit -f` sets it
    std::string working_folder;                     // empty: ours
};

/** A running program, without standard input. Killed if it is never waited for. */
class Process {
  public:
    /** @param command the program's path (or its name, to be found in PATH) and its arguments. */
    explicit Process(const std::vector<std::string>& command, const ProcessOptions& options = {});
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    bool isRunning();
    /** Whether it has a handler for a signal, as the kernel says. */
    bool handles(int signal) const;
    void send(int signal) const;

    /** Wait for its end; after `limit` it is killed, which the result shows. */
    ProcessResult wait(std::chrono::seconds limit = std::chrono::seconds(60));

  private:
    bool reap(bool block);

    pid_t pid_ = -1;
    bool has_ended_ = false;
    int status_ = 0;
    int out_ = -1;  // files that have no name any more
    int err_ = -1;
};

/** Run a program to its end. */
ProcessResult runProcess(const std::vector<std::string>& command, const ProcessOptions& options = {});

}  // namespace test
