#pragma once

#include <sys/types.h>

#include <chrono>
#include <string>
#include <vector>

namespace sonivex_tool {

/** A run of this program in a process of its own, with an empty standard input.
 *
 * The process has its own group, so that Ctrl-C reaches only the batch, which passes it on. The system asks
 * it to end when the batch dies. The destructor asks it to end if it still runs, and kills it if it does not
 * end soon. */
class ChildProcess {
  public:
    static constexpr std::chrono::seconds kLongestFarewell{10};

    /** Starts the program.
     *  @param arguments without the program's name
     *  @param longest_farewell how long the destructor waits for the process before it kills it
     *  @throw std::system_error if the system cannot start it */
    explicit ChildProcess(const std::vector<std::string>& arguments,
                          std::chrono::milliseconds longest_farewell = kLongestFarewell);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /** Takes what the process has written so far, and notices its end. Does not block.
     *  @return true if the process has ended */
    bool poll();
    /** Sends a signal to the process if it still runs. */
    void send(int signal) const;

    /** Descriptor that becomes readable when the process writes or ends; -1 if it has closed both streams. */
    int readable() const;

    /** Exit code after the end; 128 + signal if a signal ended the process. */
    int exitCode() const;
    /** The signal that ended the process, or 0. */
    int signal() const;
    /** The beginning of its standard output, at most 1 MiB. */
    const std::string& out() const { return out_; }
    /** The end of its standard error, at most 64 KiB. */
    const std::string& err() const { return err_; }

  private:
    void takeOutput();
    void endNow();

    std::chrono::milliseconds longest_farewell_;
    pid_t pid_ = -1;
    bool has_ended_ = false;
    int status_ = 0;
    int out_descriptor_ = -1;
    int err_descriptor_ = -1;
    std::string out_;
    std::string err_;
};

}  // namespace sonivex_tool
