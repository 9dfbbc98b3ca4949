#include "trial_read.h"

#include <mysofa.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

#include "head_measurements.h"

namespace sonivex_irgen {
namespace {

// The system sends SIGXCPU at the first limit.
void limitProcess(int longest_s) {
    const auto seconds = static_cast<rlim_t>(longest_s);
    const rlimit time = {.rlim_cur = seconds, .rlim_max = seconds + 1};
    const rlimit no_core = {.rlim_cur = 0, .rlim_max = 0};
    setrlimit(RLIMIT_CPU, &time);
    setrlimit(RLIMIT_CORE, &no_core);
    // A handler of the program, such as a sanitizer's, is not to report what this process tells by its end.
    for (const int number : {SIGXCPU, SIGSEGV, SIGBUS, SIGABRT, SIGFPE, SIGILL}) std::signal(number, SIG_DFL);
}

[[noreturn]] void readAndEnd(const std::string& path, int longest_s) {
    limitProcess(longest_s);
    int error = 0;
    MYSOFA_HRTF* const hrtf = mysofa_load(path.c_str(), &error);
    if (hrtf != nullptr && mysofa_check(hrtf) == MYSOFA_OK) mysofa_tocartesian(hrtf);
    _exit(0);
}

}  // namespace

void tryReading(const std::string& path, int longest_s) {
    const pid_t process = fork();
    if (process < 0) return;
    if (process == 0) readAndEnd(path, longest_s);
    int status = 0;
    while (waitpid(process, &status, 0) < 0) {
        if (errno != EINTR) return;
    }
    if (!WIFSIGNALED(status)) return;
    if (WTERMSIG(status) == SIGXCPU || WTERMSIG(status) == SIGKILL) {
        throw UnusableHead("cannot be read as a SOFA file: it is damaged, and reading it does not end");
    }
    throw UnusableHead("cannot be read as a SOFA file: it is damaged, and reading it crashes");
}

}  // namespace sonivex_irgen
