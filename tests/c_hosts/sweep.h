// Lets the memory of a piece of work run out at every point, each time in a process of its own, in which
// nothing has thrown an exception yet.
#pragma once

#include "limited_memory.h"

/** A piece of work. It calls limitMemory and freeMemory around what shall fail.
 *  @return 0 if everything is well, else the line that is not. */
typedef int (*Work)(const Refusal* refusal, size_t* levels, int count, MemoryUse* use);

/** Runs `work` with enough memory, and then with each limit at which one more request fails, and with each
 *  request failing alone and as the first of all that need new memory. SONIVEX_EVERY_CALL in the
 *  environment asks for all of them, otherwise every `stride`-th is tried. Prints what ended badly.
 *  @return 0, or 1 if a process ended badly or fewer than nine tenths of the runs met a refusal. */
int sweepMemory(const char* name, Work work, int stride);

/** Runs `work(argument)` on a thread of its own, which is there although memory fails. @return its result. */
int onAThread(int (*work)(void*), void* argument);

/** Returns whether the process has no C++ library, so that no thread of it can have thrown. */
bool isPlainC(void);

/** Returns the line of the first condition that does not hold. */
#define DEMAND(condition)                  \
    do {                                   \
        if (!(condition)) return __LINE__; \
    } while (0)
