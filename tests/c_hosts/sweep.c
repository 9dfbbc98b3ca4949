#define _GNU_SOURCE
#include "sweep.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

enum { kMostLevels = 20000, kMostSeconds = 60 };

/** The result that a process sends to its parent. */
typedef struct {
    int line; /* that is wrong, or 0 */
    MemoryUse use;
    size_t levels[kMostLevels];
} Report;

static Report* report; /* shared with the children */

static bool endsWell(const char* name, Work work, const Refusal* refusal, bool notes_levels) {
    report->line = -1;
    fflush(stdout);
    const pid_t child = fork();
    if (child == 0) {
        alarm(kMostSeconds);
        // The effects announce failed creations on standard output, the libraries theirs on standard error.
        const int nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, STDOUT_FILENO);
        dup2(nowhere, STDERR_FILENO);
        report->line = work(refusal, notes_levels ? report->levels : NULL, kMostLevels, &report->use);
        _exit(0);
    }
    int status = 0;
    if (child < 0 || waitpid(child, &status, 0) != child) return false;
    if (WIFEXITED(status) && WEXITSTATUS(status) == 0 && report->line == 0) return true;
    printf("%s, limit %zu, number %d, last %d: ", name, refusal->limit_bytes, refusal->number, refusal->last);
    if (WIFSIGNALED(status)) {
        printf("ended by signal %d\n", WTERMSIG(status));
    } else if (WEXITSTATUS(status) != 0) {
        printf("ended with exit code %d\n", WEXITSTATUS(status));
    } else {
        printf("line %d is wrong\n", report->line);
    }
    return false;
}

static int compareSizes(const void* first, const void* second) {
    const size_t a = *(const size_t*)first;
    const size_t b = *(const size_t*)second;
    return a < b ? -1 : a > b;
}

// Sorts the levels, and keeps each once. @return how many there are.
static int sortedLevels(size_t* levels) {
    int count = 0;
    while (count < kMostLevels && levels[count] != 0) ++count;
    qsort(levels, (size_t)count, sizeof levels[0], compareSizes);
    int kept = 0;
    for (int i = 0; i < count; ++i) {
        if (kept == 0 || levels[kept - 1] != levels[i]) levels[kept++] = levels[i];
    }
    return kept;
}

int sweepMemory(const char* name, Work work, int stride) {
    if (getenv("SONIVEX_EVERY_CALL") != NULL) stride = 1;
    if (report == NULL) {
        report = mmap(NULL, sizeof *report, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (report == MAP_FAILED) return 1;
    }
    for (int i = 0; i < kMostLevels; ++i) report->levels[i] = 0;
    const Refusal nothing = {.limit_bytes = 0};
    if (!endsWell(name, work, &nothing, true)) return 1;
    const int requests = report->use.requests;
    static size_t levels[kMostLevels];
    for (int i = 0; i < kMostLevels; ++i) levels[i] = report->levels[i];
    const int count = sortedLevels(levels);
    int bad = requests == 0 || count == 0 || count == kMostLevels;
    int met = 0;
    int runs = 0;
    for (int i = 0; i < count; i += stride) {
        if (levels[i] < 2) continue;
        const Refusal limit = {.limit_bytes = levels[i] - 1};
        bad += endsWell(name, work, &limit, false) ? 0 : 1;
        met += report->use.refused > 0;
        ++runs;
    }
    for (int number = 1; number <= requests; number += stride) {
        const Refusal once = {.number = number};
        const Refusal from_there_on = {.last = number};
        for (int manner = 0; manner < 2; ++manner) {
            bad += endsWell(name, work, manner == 0 ? &once : &from_there_on, false) ? 0 : 1;
            met += report->use.refused > 0;
            ++runs;
        }
    }
    printf("%s: %d requests, %d levels; %d runs, %d without memory, %d ended badly\n", name, requests, count,
           runs, met, bad);
    return bad > 0 || met < runs * 9 / 10;
}

/** A thread's work. */
typedef struct {
    int (*work)(void*);
    void* argument;
    int result;
    pthread_mutex_t may_begin;
} ThreadsWork;

static void* runThread(void* argument) {
    ThreadsWork* const work = argument;
    pthread_mutex_lock(&work->may_begin);
    work->result = work->work(work->argument);
    return NULL;
}

int onAThread(int (*work)(void*), void* argument) {
    ThreadsWork threads_work = {
        .work = work, .argument = argument, .result = -1, .may_begin = PTHREAD_MUTEX_INITIALIZER};
    pthread_mutex_lock(&threads_work.may_begin);
    pthread_t thread;
    pauseLimit(true);
    const int error = pthread_create(&thread, NULL, runThread, &threads_work);
    pauseLimit(false);
    pthread_mutex_unlock(&threads_work.may_begin);
    DEMAND(error == 0);
    DEMAND(pthread_join(thread, NULL) == 0);
    return threads_work.result;
}

bool isPlainC(void) {
    return dlopen("libstdc++.so.6", RTLD_NOW | RTLD_NOLOAD) == NULL;
}
