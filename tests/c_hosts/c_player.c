// A player in C that loads the filter at run time and plays without enough memory: on the thread that loaded
// it and on another, with and without a worker, and on a thread to which another hands its filter. A frame is
// then lost at most, with a log line, or waits, and nothing ends the process.
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
static bool is_handed_over; /* a filter that another thread has made and started */

/** The arguments of a piece of work. */
typedef struct {
    const Refusal* refusal;
    size_t* levels;
    int count;
    MemoryUse* use;
} Task;

static int frames_pushed;
static int frames_out;

// @return 0 or the line that is wrong.
static int pullAll(void) {
    for (int result = glue->pull(); result != 0; result = glue->pull()) {
        DEMAND(result > 0);
        ++frames_out;
    }
    return 0;
}

static bool isNoneInside(void) {
    return frames_out + glue->lost() == frames_pushed;
}

// Pulls until each frame came out or was given up. A frame may wait for memory, so a player without memory
// gives a worker only some time. @return 0 or the line that is wrong.
static int pullPatiently(bool is_without_memory) {
    DEMAND(pullAll() == 0);
    for (int pauses = 0; has_worker && !isNoneInside(); ++pauses) {
        if (is_without_memory && refusals() > 0 && pauses * kPause_us > kPatience_us) break;
        usleep(kPause_us);
        DEMAND(pullAll() == 0);
    }
    return 0;
}

// Plays without enough memory. @return 0 or the line that is wrong.
static int playWithoutMemory(const Task* task) {
    limitMemory(task->refusal, task->levels, task->count);
    const bool is_made = is_handed_over || glue->make(has_worker) == 0;
    const int started = is_made ? glue->start() : -1;
    DEMAND(started <= 0);
    // A filter that is handed over keeps the options that it has.
    for (int i = 0; i < kFrames && (started == 0 || is_handed_over); ++i) {
        DEMAND(glue->push() == 0);
        ++frames_pushed;
        DEMAND(pullPatiently(true) == 0);
        if (!isNoneInside()) break;  // the frame waits for memory, or the worker for the processor
    }
    *task->use = freeMemory();
    const bool is_refused = task->use->refused > 0;
    DEMAND(started == 0 || is_refused);
    DEMAND(frames_out == kFrames || is_refused);
    return 0;
}

static int runTask(void* argument) {
    const Task* const task = argument;
    const int wrong_line = playWithoutMemory(task);
    if (wrong_line != 0) return wrong_line;

    // There is memory again. If no filter was made or the options were refused, the player tries again.
    if (!glue->isMade()) DEMAND(glue->make(has_worker) == 0);
    DEMAND(glue->start() == 0);
    DEMAND(pullPatiently(false) == 0);
    const int lost = glue->lost();
    DEMAND(task->refusal->number == 0 || glue->announced() >= lost);
    DEMAND(glue->push() == 0);
    ++frames_pushed;
    DEMAND(pullPatiently(false) == 0);
    DEMAND(isNoneInside() && glue->lost() == lost);
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

static int afterAHandover(const Refusal* refusal, size_t* levels, int count, MemoryUse* use) {
    DEMAND(glue->make(has_worker) == 0 && glue->start() == 0);
    return onAnotherThread(refusal, levels, count, use);
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
    is_handed_over = true;
    bad += sweepMemory("a filter that another thread started", afterAHandover, kStride);
    is_handed_over = false;
    has_worker = true;
    bad += sweepMemory("a filter with a worker", onThisThread, kStride);
    bad += sweepMemory("a filter with a worker on another thread", onAnotherThread, kStride);
    return bad > 0 ? 1 : 0;
}
