// Replaces the C allocator of a C program, to let its memory run out. Everything else in the process gets its
// memory there too: the loader, the C++ library, the conversion libraries.
//
//     const Refusal refusal = {.limit_bytes = 5000};
//     limitMemory(&refusal, NULL, 0);
//     handle = aem_CreateNormalizer(2, 48000);  // fails if it asks for more
//     const MemoryUse use = freeMemory();
#pragma once

#include <stdbool.h>
#include <stddef.h>

/** Says which requests for memory fail. Zero stands for none. */
typedef struct {
    // Each that would take more than these bytes in all, counted from limitMemory on.
    size_t limit_bytes;
    // The one with this number, counted from 1. The loader's requests have no number: the process ends if the
    // loader gets no memory for a thread's variables, so somebody must have asked for it before.
    int number;
    // From the one with this number on, each that would take more than was ever taken before.
    int last;
} Refusal;

/** Counts the requests between limitMemory and freeMemory. */
typedef struct {
    int requests; /* without those of the loader */
    int refused;
} MemoryUse;

/** Makes requests of all threads fail.
 *  @param levels gets what each request would take in all, in bytes, for up to `count` requests; may be
 *  null. */
void limitMemory(const Refusal* refusal, size_t* levels, int count);
/** Lets all requests pass, as for what a host does that is no part of the work, or ends that. */
void pauseLimit(bool is_paused);
/** @return how many requests have failed since limitMemory. */
int refusals(void);
/** Ends that. */
MemoryUse freeMemory(void);
