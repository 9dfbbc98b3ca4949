// A host of LV2 plug-ins in C that makes each plug-in, runs it and changes its settings without enough
// memory. The host gets no plug-in, or one that sounds by its old or its new settings, and nothing ends the
// process. The work that a plug-in schedules runs on another thread.
//
//     c_host LIBRARY EFFECT...     the library has the plug-ins of these effects
#include <dlfcn.h>
#include <lv2/core/lv2.h>
#include <lv2/worker/worker.h>
#include <stdio.h>
#include <string.h>

#include "sweep.h"

enum {
    kBlock_frames = 512,
    kBlocks = 8,
    kMostPorts = 20,
    kOutputs = 2, /* the last audio ports */
    kStride = 7,
    kMostMessage_bytes = 256
};

static const float kOldSetting = 1.0F;
static const float kNewSetting = 13.0F;

/** A plug-in that the host knows. */
typedef struct {
    const char* effect;
    const char* uri;
    int audio_ports;
} Kind;

static const Kind kKinds[] = {
    {"surround", "urn:sonivex:lv2:surround-stereo", 4},
    {"surround", "urn:sonivex:lv2:surround-71", 10},
    {"dialogue", "urn:sonivex:lv2:dialogue", 4},
    {"normalizer", "urn:sonivex:lv2:normalizer-stereo", 4},
};

/** A host with one plug-in. */
typedef struct {
    const LV2_Worker_Interface* worker;
    char message[kMostMessage_bytes];
    uint32_t message_bytes; /* 0: no work is scheduled */
    float audio[kMostPorts][kBlock_frames];
    float control; /* of surround its type, of dialogue enhancement its voice level */
    const Refusal* refusal;
    size_t* levels;
    int count;
    MemoryUse* use;
} Host;

/** What a plug-in puts out. */
typedef struct {
    float samples[kBlocks][kOutputs][kBlock_frames];
} Sound;

static const Kind* kind;
static const LV2_Descriptor* descriptor;
static bool has_worker;
static Host host;
static LV2_Handle plugin;

static LV2_Worker_Status schedule(LV2_Worker_Schedule_Handle handle, uint32_t bytes, const void* data) {
    (void)handle;
    if (bytes > kMostMessage_bytes) return LV2_WORKER_ERR_NO_SPACE;
    memcpy(host.message, data, bytes);
    host.message_bytes = bytes;
    return LV2_WORKER_SUCCESS;
}

static LV2_Worker_Status takeNoResponse(LV2_Worker_Respond_Handle handle, uint32_t bytes, const void* data) {
    (void)handle;
    (void)bytes;
    (void)data;
    return LV2_WORKER_SUCCESS;
}

static int work(void* nothing) {
    (void)nothing;
    DEMAND(host.worker->work(plugin, takeNoResponse, NULL, host.message_bytes, host.message) ==
           LV2_WORKER_SUCCESS);
    return 0;
}

static LV2_Handle make(void) {
    static LV2_Worker_Schedule scheduler = {NULL, schedule};
    static const LV2_Feature feature = {LV2_WORKER__schedule, &scheduler};
    const LV2_Feature* const features[] = {has_worker ? &feature : NULL, NULL};
    return descriptor->instantiate(descriptor, 48000.0, "/", features);
}

static void connectAndActivate(void) {
    for (int i = 0; i < kind->audio_ports; ++i) {
        descriptor->connect_port(plugin, (uint32_t)i, host.audio[i]);
    }
    descriptor->connect_port(plugin, (uint32_t)kind->audio_ports + 2, &host.control);
    descriptor->activate(plugin);
}

// Runs a block, and then the work that it has scheduled. @return 0 or the line that is wrong.
static int runBlock(void) {
    descriptor->run(plugin, kBlock_frames);
    if (host.message_bytes == 0) return 0;
    DEMAND(onAThread(work, NULL) == 0);
    host.message_bytes = 0;
    return 0;
}

static int run(void) {
    for (int i = 0; i < kBlocks; ++i) DEMAND(runBlock() == 0);
    return 0;
}

// Records what the plug-in makes of a noise after a fresh start. @return 0 or the line that is wrong.
static int record(Sound* sound) {
    const int inputs = kind->audio_ports - kOutputs;
    uint32_t noise = 1;
    descriptor->activate(plugin);
    for (int block = 0; block < kBlocks; ++block) {
        for (int i = 0; i < inputs * kBlock_frames; ++i) {
            noise = noise * 1664525U + 1013904223U;
            host.audio[i / kBlock_frames][i % kBlock_frames] = (float)(noise >> 16) / 65536.0F - 0.5F;
        }
        DEMAND(runBlock() == 0);
        memcpy(sound->samples[block], host.audio[inputs], sizeof sound->samples[block]);
    }
    return 0;
}

// Records a plug-in that had enough memory for a setting. @return 0 or the line that is wrong.
static int recordUnharmed(float setting, Sound* sound) {
    plugin = make();
    DEMAND(plugin != NULL);
    host.control = setting;
    connectAndActivate();
    DEMAND(run() == 0);
    DEMAND(record(sound) == 0);
    descriptor->cleanup(plugin);
    return 0;
}

static bool areEqual(const Sound* first, const Sound* second) {
    return memcmp(first, second, sizeof *first) == 0;
}

// @return 0 or the line that is wrong.
static int expectOldOrNewSound(const Sound* sound, bool may_be_old) {
    static Sound old_sound;
    static Sound new_sound;
    DEMAND(recordUnharmed(kOldSetting, &old_sound) == 0);
    DEMAND(recordUnharmed(kNewSetting, &new_sound) == 0);
    // The noise sounds the same at every voice level, and the normalizer has no settings.
    const bool is_surround = strcmp(kind->effect, "surround") == 0;
    DEMAND(areEqual(&old_sound, &new_sound) != is_surround);
    DEMAND(areEqual(sound, &new_sound) || (may_be_old && areEqual(sound, &old_sound)));
    return 0;
}

static int live(void* nothing) {
    (void)nothing;
    static Sound sound;
    limitMemory(host.refusal, host.levels, host.count);
    plugin = make();
    const bool is_made = plugin != NULL;
    if (!is_made) {
        *host.use = freeMemory();
        DEMAND(host.use->refused > 0);
        plugin = make();
        DEMAND(plugin != NULL);
    }
    if (descriptor->extension_data != NULL) host.worker = descriptor->extension_data(LV2_WORKER__interface);
    host.control = kOldSetting;
    connectAndActivate();
    DEMAND(run() == 0);
    host.control = kNewSetting;
    DEMAND(run() == 0);
    if (is_made) *host.use = freeMemory();
    DEMAND(run() == 0);
    DEMAND(record(&sound) == 0);
    descriptor->cleanup(plugin);
    return expectOldOrNewSound(&sound, is_made && host.use->refused > 0);
}

static void prepare(const Refusal* refusal, size_t* levels, int count, MemoryUse* use) {
    host = (Host){.refusal = refusal, .levels = levels, .count = count, .use = use};
}

static int liveOnThisThread(const Refusal* refusal, size_t* levels, int count, MemoryUse* use) {
    prepare(refusal, levels, count, use);
    return live(NULL);
}

static int liveOnAnotherThread(const Refusal* refusal, size_t* levels, int count, MemoryUse* use) {
    prepare(refusal, levels, count, use);
    return onAThread(live, NULL);
}

static bool findDescriptor(LV2_Descriptor_Function all) {
    for (uint32_t i = 0; (descriptor = all(i)) != NULL; ++i) {
        if (strcmp(descriptor->URI, kind->uri) == 0) return true;
    }
    return false;
}

static bool isAmong(const char* word, char** words, int count) {
    for (int i = 0; i < count; ++i) {
        if (strcmp(word, words[i]) == 0) return true;
    }
    return false;
}

int main(int count, char** arguments) {
    if (count < 3 || !isPlainC()) return 2;
    void* const library = dlopen(arguments[1], RTLD_NOW);
    void* const symbol = library != NULL ? dlsym(library, "lv2_descriptor") : NULL;
    if (symbol == NULL) {
        fprintf(stderr, "%s\n", dlerror());
        return 2;
    }
    LV2_Descriptor_Function all = NULL;
    memcpy(&all, &symbol, sizeof all);
    int bad = 0;
    for (size_t i = 0; i < sizeof kKinds / sizeof kKinds[0]; ++i) {
        kind = &kKinds[i];
        if (!isAmong(kind->effect, arguments + 2, count - 2)) continue;
        if (!findDescriptor(all)) {
            printf("the library lacks %s\n", kind->uri);
            ++bad;
            continue;
        }
        has_worker = false;
        bad += sweepMemory(kind->uri, liveOnThisThread, kStride);
        has_worker = strstr(kind->uri, "surround") != NULL;
        bad += sweepMemory(kind->uri, liveOnAnotherThread, kStride);
    }
    return bad > 0 ? 1 : 0;
}
