// Ends the program when a thread does in a stretch of its work what a thread of a sound card must not do:
//
//     test::RealTimeSection section;
//     effect.process(..);                    // no allocation, no lock, no system call
//
// Two traps lie in each section. The run-time library of Clang's real-time sanitizer knows the functions of
// the C library that allocate, lock and wait. The kernel reports every system call, whoever makes it
// (PR_SET_SYSCALL_USER_DISPATCH, Linux on x86-64). It lets pass only reading a clock that all processes
// share, which needs a system call on few machines. The program then writes a report with a stack to
// standard error and ends with kTrapExitCode. A failing assertion allocates, so assertions stand outside of
// sections.
#pragma once

namespace test {

/** The exit code of a program that fell into a trap. */
inline constexpr int kTrapExitCode = 1;

/** A section of the calling thread, from construction to destruction. Sections do not nest. */
class RealTimeSection {
  public:
    RealTimeSection();
    ~RealTimeSection();
    RealTimeSection(const RealTimeSection&) = delete;
    RealTimeSection& operator=(const RealTimeSection&) = delete;

    /** Returns whether the traps of the calling thread are set: it is in a section and not in a pause. */
    static bool isTrapping();
};

/** Opens the traps of the calling thread's section during its lifetime. Outside of sections and inside
 *  another pause it changes nothing. */
class RealTimePause {
  public:
    RealTimePause();
    ~RealTimePause();
    RealTimePause(const RealTimePause&) = delete;
    RealTimePause& operator=(const RealTimePause&) = delete;

  private:
    bool ends_here_;
};

/** Returns whether the kernel can report system calls. Without it, sections have only the other trap. */
bool canTrapSystemCalls();

}  // namespace test
