// A C program that loads libsonivex at run time and uses the effects without enough memory, on the thread
// that loaded the library and on another. Creation then fails, and nothing ends the process.
//
//     c_effects LIBRARY
#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "sonivex/sonivex.h"
#include "sweep.h"

enum { kFrames = 512, kSamples = 2 * kFrames, kStride = 3 };

static void* library;
static void* (*create_surround)(int, int, int, int, int);
static void* (*create_dialogue)(int, int, double, double, double);
static void* (*create_normalizer)(int, int);
static int (*process_surround)(void*, const short*, short*, int);
static int (*process_dialogue)(void*, const short*, short*, int, int);
static int (*process_normalizer)(void*, const short*, short*, int, int);
static void (*release_surround)(void*);
static void (*release_dialogue)(void*);
static void (*release_normalizer)(void*);
static int (*create_common)(SonivexEffect**, int, int, int, int, int);
static int (*process_common)(SonivexEffect*, const int16_t*, int16_t*, int);
static void (*release_common)(SonivexEffect*);

// Finds a function without the cast from an object to a function, which C leaves undefined.
static bool find(const char* name, void* function) {
    void* const symbol = dlsym(library, name);
    memcpy(function, &symbol, sizeof symbol);
    return symbol != NULL;
}

static bool findAll(void) {
    return find("aem_CreateSurround", &create_surround) &&
           find("aem_CreateDialoguEnhance", &create_dialogue) &&
           find("aem_CreateNormalizer", &create_normalizer) &&
           find("aem_ProcessSurround", &process_surround) &&
           find("aem_ProcessDialoguEnhance", &process_dialogue) &&
           find("aem_ProcessNormalizer", &process_normalizer) &&
           find("aem_ReleaseSurround", &release_surround) &&
           find("aem_ReleaseDialoguEnhance", &release_dialogue) &&
           find("aem_ReleaseNormalizer", &release_normalizer) &&
           find("sonivex_create_surround", &create_common) &&
           find("sonivex_process_int16", &process_common) && find("sonivex_release", &release_common);
}

// @return the result of one call, or 0 if the effect was not made.
static int useSurround(const short* in, short* out) {
    void* const handle = create_surround(2, 48000, 13, 2, 1);
    if (handle == NULL) return 0;
    const int result = process_surround(handle, in, out, kFrames);
    release_surround(handle);
    return result;
}

static int useDialogue(const short* in, short* out) {
    void* const handle = create_dialogue(2, 48000, 1.0, 1.0, 2.0);
    if (handle == NULL) return 0;
    const int result = process_dialogue(handle, in, out, kFrames, 48000);
    release_dialogue(handle);
    return result;
}

static int useNormalizer(const short* in, short* out) {
    void* const handle = create_normalizer(2, 48000);
    if (handle == NULL) return 0;
    const int result = process_normalizer(handle, in, out, kFrames, 2);
    release_normalizer(handle);
    return result;
}

static int useCommon(const short* in, short* out) {
    SonivexEffect* effect = NULL;
    const int status = create_common(&effect, 2, 48000, 1, 1, 1);
    if (status == SONIVEX_ERROR_MEMORY && effect == NULL) return 0;
    if (status != SONIVEX_OK) return -1;
    const int result = process_common(effect, in, out, kFrames) == SONIVEX_OK ? kSamples : -1;
    release_common(effect);
    return result;
}

/** An effect, and the arguments of a piece of work. */
typedef struct {
    int (*use)(const short* in, short* out);
    const Refusal* refusal;
    size_t* levels;
    int count;
    MemoryUse* use_of_memory;
} Task;

static int runTask(void* argument) {
    const Task* const task = argument;
    static short in[kSamples];
    static short out[kSamples];
    for (int i = 0; i < kSamples; ++i) in[i] = (short)((i * 7919) % 6000 - 3000);
    limitMemory(task->refusal, task->levels, task->count);
    const int result = task->use(in, out);
    *task->use_of_memory = freeMemory();
    DEMAND(result == kSamples || (result == 0 && task->use_of_memory->refused > 0));
    DEMAND(task->use(in, out) == kSamples); /* there is memory again */
    return 0;
}

static int (*current_use)(const short* in, short* out);

static int onThisThread(const Refusal* refusal, size_t* levels, int count, MemoryUse* use) {
    Task task = {current_use, refusal, levels, count, use};
    return runTask(&task);
}

static int onAnotherThread(const Refusal* refusal, size_t* levels, int count, MemoryUse* use) {
    Task task = {current_use, refusal, levels, count, use};
    return onAThread(runTask, &task);
}

int main(int count, char** arguments) {
    if (count != 2 || !isPlainC()) return 2;
    library = dlopen(arguments[1], RTLD_NOW);
    if (library == NULL || !findAll()) {
        fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    static const struct {
        const char* name;
        int (*use)(const short* in, short* out);
    } kEffects[] = {
        {"surround", useSurround},
        {"dialogue enhancement", useDialogue},
        {"normalizer", useNormalizer},
        {"the common interface", useCommon},
    };
    int bad = 0;
    for (size_t i = 0; i < sizeof kEffects / sizeof kEffects[0]; ++i) {
        current_use = kEffects[i].use;
        bad += sweepMemory(kEffects[i].name, onThisThread, kStride);
        bad += sweepMemory(kEffects[i].name, onAnotherThread, kStride);
    }
    return bad > 0 ? 1 : 0;
}
