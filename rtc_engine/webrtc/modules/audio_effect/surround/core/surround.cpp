#include "sonivex/surround.h"

#include <exception>
#include <memory>
#include <new>

#include "effect_log.h"
#include "surround_handle.h"
#include "surround_pipelines.h"

namespace {

using sonivex::kSurroundBlockFrames;
using sonivex::kSurroundType3D;
using sonivex::kSurroundTypeMegaBass;

/* Part of the log lines, see effect_log.h. */
constexpr int kLogLineNoMemory = 122;
constexpr int kLogLineChannelsOf3D = 145;
constexpr int kLogLineChannelsOfMegaBass = 163;
constexpr int kLogLineType = 168;
constexpr int kLogLineRelease = 732;
constexpr const char* kLogNoMemory = "[KelvoSurround]::kv surround handle is created failed.\n";
/* With a full-width exclamation mark, U+FF01. */
constexpr const char* kLogChannels =
    "[KelvoSurround]::The input audio channel number is not supported\xEF\xBC\x81\n";
constexpr const char* kLogType = "[KelvoSurround]::kv surround type is not supported.\n";

void log(int line, const char* message) {
    sonivex::logEffectMessage(sonivex::kSurroundLogSource, line, message);
}

struct FreeHandle {
    void operator()(SurroundHandle* handle) const {
        delete handle->reverb;
        if (handle->limiterState != nullptr) au2_limiter_free(handle->limiterState);
        delete handle;
    }
};
using HandlePointer = std::unique_ptr<SurroundHandle, FreeHandle>;

bool prepareMegaBass(ConvolveReverb& reverb, int channels, int mode) {
    const auto mode_set = static_cast<unsigned>(mode);
    if (channels == 1 || channels == 2) {
        reverb.prepareToPlay_Kelvo_Surround_2(channels, kSurroundBlockFrames, mode_set);
    } else if (channels == 8) {
        reverb.prepareToPlay_Kelvo_Surround_7_1(channels, kSurroundBlockFrames, mode_set);
    } else if (channels == 6) {
        reverb.prepareToPlay_Kelvo_Surround_5_1(channels, kSurroundBlockFrames, mode_set);
    } else {
        log(kLogLineChannelsOfMegaBass, kLogChannels);
        return false;
    }
    reverb.prepareToPlay_Kelvo_Audio(channels, kSurroundBlockFrames);
    return true;
}

bool prepare3D(ConvolveReverb& reverb, int channels) {
    if (channels == 1 || channels == 2) {
        reverb.prepareToPlay_Kelvo_Bingo_2(channels, kSurroundBlockFrames);
    } else if (channels == 8) {
        reverb.prepareToPlay_Kelvo_Bingo_7_1(channels, kSurroundBlockFrames);
    } else if (channels == 6) {
        reverb.prepareToPlay_Kelvo_Bingo_5_1(channels, kSurroundBlockFrames);
    } else {
        log(kLogLineChannelsOf3D, kLogChannels);
        return false;
    }
    return true;
}

bool prepare(const SurroundHandle& handle) {
    if (handle.type == kSurroundTypeMegaBass) {
        return prepareMegaBass(*handle.reverb, handle.channels, handle.mode);
    }
    if (handle.type == kSurroundType3D) return prepare3D(*handle.reverb, handle.channels);
    log(kLogLineType, kLogType);
    return false;
}

/* Throws when memory runs out. */
void* createHandle(int channels, int sample_rate, int type, int mode, int limiter) {
    HandlePointer handle(new SurroundHandle{});
    handle->channels = channels;
    handle->sampleRate = sample_rate;
    handle->type = type;
    handle->mode = mode;
    handle->limiter = limiter;
    handle->reverb = new ConvolveReverb();
    if (!prepare(*handle)) {
        /* A rejected handle has always been left allocated, and hosts see the same use of memory. */
        static_cast<void>(handle.release());
        return nullptr;  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the leak is meant
    }
    au2_limiter_create(&handle->limiterState);
    if (handle->limiterState == nullptr) throw std::bad_alloc();
    au2_limiter_reset(handle->limiterState);
    return handle.release();
}

using PipelineFunction = int (*)(void*, short*, short*, int);

/* Null if there is none. */
PipelineFunction pipelineFor(int type, int channels) {
    if (type == kSurroundTypeMegaBass) {
        if (channels == 1 || channels == 2) return ProcessSurround_Kelvo_Surround_2_To_Nangua;
        if (channels == 6) return ProcessSurround_Kelvo_Surround_5_1_To_Nangua;
        if (channels == 8) return ProcessSurround_Kelvo_Surround_7_1_To_Nangua;
    }
    if (type == kSurroundType3D) {
        if (channels == 1 || channels == 2) return ProcessSurround_Kelvo_Bingo_2;
        if (channels == 6) return ProcessSurround_Kelvo_Bingo_5_1;
        if (channels == 8) return ProcessSurround_Kelvo_Bingo_7_1;
    }
    return nullptr;
}

}  // namespace

void* aem_CreateSurround(int channels, int sampleRate, int type, int mode, int limiter) {
    try {
        return createHandle(channels, sampleRate, type, mode, limiter);
    } catch (const std::exception&) {
        log(kLogLineNoMemory, kLogNoMemory);
        return nullptr;
    }
}

int aem_ProcessSurround(void* handle, const short* in, short* out, int frames) {
    if (handle == nullptr) return 0;
    const auto& surround = *static_cast<const SurroundHandle*>(handle);
    const PipelineFunction pipeline = pipelineFor(surround.type, surround.channels);
    if (pipeline == nullptr) return 0;
    return 2 * pipeline(handle, const_cast<short*>(in), out, frames);  // which only reads it
}

void aem_ReleaseSurround(void* handle) {
    if (handle == nullptr) {
        log(kLogLineRelease, sonivex::kSurroundLogNullHandle);
        return;
    }
    FreeHandle()(static_cast<SurroundHandle*>(handle));
}
