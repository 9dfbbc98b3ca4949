// A player in C that loads the filter at run time and plays without enough memory: on the thread that loaded
// it and on another, with and without a worker. A frame is then lost at most, with a log line, and nothing
// ends the process.
//
//     c_player GLUE PLUGIN
#define _GNU_SOURCE
#include <dlfcn.h>
#include <stdio.h>
#include <unistd.h>

#include "player_glue.h"
#include "sweep.h"

enum { kStride = 23, kFrames = 2, kPause_us = 200, kPatience_us = 50000 };

static const PlayerGlue* glue;
static bool has_worker;

/** The arguments of a piece of work. */
typedef struct {
    const Refusal* refusal;
    size_t* levels;
    int count;
    MemoryUse* use;
} Task;

// Pulls until the frame that was pushed came out or was given up, or until memory was refused and the
// worker had time to fail. @return 1 or 0, or -1 if the frame is damaged.
static int pullPatiently(int lost_before, bool may_wait_for_memory) {
    int result = glue->pull();
    for (int pauses = 0; has_worker && result == 0 && glue->lost() == lost_before; ++pauses) {
        if (may_wait_for_memory && refusals() > 0 && pauses * kPause_us > kPatience_us) break;
        usleep(kPause_us);
        result = glue->pull();
    }
    return result;
}

// Plays without enough memory. @return 0 or the line that is wrong.
static int playWithoutMemory(const Task* task, int* frames_out) {
    limitMemory(task->refusal, task->levels, task->count);
    const bool is_started = glue->make(has_worker) == 0 && glue->start() == 0;
    *frames_out = 0;
    for (int i = 0; i < kFrames && is_started; ++i) {
        const int lost = glue->lost();
        DEMAND(glue->push() == 0);
        const int out = pullPatiently(lost, true);
        DEMAND(out >= 0);
        *frames_out += out;
        if (out == 0 && glue->lost() == lost) break;  // it waits for memory
    }
    *task->use = freeMemory();
    const bool is_refused = task->use->refused > 0;
    DEMAND(is_started || is_refused);
    DEMAND(*frames_out == kFrames || is_refused);
    return 0;
}

static int runTask(void* argument) {
    const Task* const task = argument;
    int frames = 0;
    const int wrong_line = playWithoutMemory(task, &frames);
    if (wrong_line != 0) return wrong_line;
    const int lost = glue->lost();
    DEMAND(task->refusal->number == 0 || glue->announced() >= lost);

    // There is memory again. If no filter was made or the options were refused, the player tries again.
    if (!glue->isMade()) DEMAND(glue->make(has_worker) == 0);
    DEMAND(glue->start() == 0);
    DEMAND(glue->push() == 0);
    DEMAND(pullPatiently(glue->lost(), false) == 1);
    DEMAND(glue->lost() == lost);
    glue->end();
    return 0;
}

static int onThisThread(const Refusal* refusal, size_t* levels, int count, MemoryUse* use) {
    Task task = {refusal, levels, count, use};
    return runTask(&task);
}

static int onAnotherThread(const Refusal* refusal, size_t* levels, int count, MemoryUse* use) {
    Task task = {refusal, levels, count, use};
    return onAThread(runTask, &task);
}

int main(int count, char** arguments) {
    if (count != 3 || !isPlainC()) return 2;
    void* const library = dlopen(arguments[1], RTLD_NOW);
    if (library != NULL) glue = dlsym(library, "player_glue");
    if (glue == NULL || glue->prepare(arguments[2]) != 0) {
        fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    int bad = 0;
    bad += sweepMemory("a filter on the thread that loaded it", onThisThread, kStride);
    bad += sweepMemory("a filter on another thread", onAnotherThread, kStride);
    has_worker = true;
    bad += sweepMemory("a filter with a worker", onThisThread, kStride);
    bad += sweepMemory("a filter with a worker on another thread", onAnotherThread, kStride);
    return bad > 0 ? 1 : 0;
}
