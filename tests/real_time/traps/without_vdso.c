// Runs a program without the kernel's vDSO, in which a clock is read without a system call. Some kernels and
// emulators have none.
//
//     without_vdso PROGRAM ARGUMENT..
#include <elf.h>
#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ptrace.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

enum { kCannotHide = 77, kWord_bytes = sizeof(long) };

static int giveUp(const char* what) {
    fprintf(stderr, "without_vdso: cannot %s: %s\n", what, strerror(errno));
    return kCannotHide;
}

// Takes the vDSO's address out of the values that the kernel put on a new program's stack: the arguments, the
// environment, and then pairs of a type and a value. @return whether there was one.
static int hideVdso(pid_t program) {
    struct user_regs_struct registers;
    if (ptrace(PTRACE_GETREGS, program, NULL, &registers) != 0) return 0;
    char* place = (char*)registers.rsp;
    for (int ends = -1; ends < 2; place += kWord_bytes) {
        errno = 0;
        const long word = ptrace(PTRACE_PEEKDATA, program, place, NULL);
        if (errno != 0) return 0;
        if (ends < 0 || word == 0) ++ends;  // the first word is the number of arguments
    }
    for (;; place += 2 * kWord_bytes) {
        errno = 0;
        const long type = ptrace(PTRACE_PEEKDATA, program, place, NULL);
        if (errno != 0 || type == AT_NULL) return 0;
        if (type != AT_SYSINFO_EHDR) continue;
        return ptrace(PTRACE_POKEDATA, program, place, (void*)(long)AT_IGNORE) == 0;
    }
}

int main(int count, char** arguments) {
    if (count < 2) return 2;
    const pid_t program = fork();
    if (program < 0) return giveUp("start a process");
    if (program == 0) {
        if (ptrace(PTRACE_TRACEME, 0, NULL, NULL) != 0) _exit(giveUp("be traced"));
        execv(arguments[1], arguments + 1);
        _exit(giveUp("run the program"));
    }
    int status = 0;
    if (waitpid(program, &status, 0) != program) return giveUp("wait");
    if (WIFSTOPPED(status)) {
        const int is_hidden = hideVdso(program);
        ptrace(PTRACE_DETACH, program, NULL, NULL);
        if (waitpid(program, &status, 0) != program) return giveUp("wait");
        if (!is_hidden) return giveUp("find the vDSO");
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}
