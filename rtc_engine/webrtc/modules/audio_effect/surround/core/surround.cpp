#include "sonivex/surround.h"

#include <algorithm>
#include <climits>
#include <exception>
#include <memory>

#include "au2_limiter_owner.h"
#include "effect_log.h"
#include "layouts.h"
#include "prepare_to_throw.h"
#include "rounding.h"
#include "surround_control.h"
#include "surround_handle.h"
#include "surround_pipelines.h"

namespace {

using sonivex::Arena;
using sonivex::k3dSurroundType;
using sonivex::kMegaBassType;
using sonivex::Layout;
using sonivex::SampleRing;

// Line numbers in the log lines, see effect_log.h.
constexpr int kLogLineNoMemory = 122;
constexpr int kLogLineChannelsOf3D = 145;
constexpr int kLogLineChannelsOfMegaBass = 163;
constexpr int kLogLineType = 168;
constexpr int kLogLineRelease = 732;
constexpr const char* kLogNoMemory = "[KelvoSurround]::kv surround handle is created failed.\n";
// The message ends with a full-width exclamation mark, U+FF01.
constexpr const char* kLogChannels =
    "[KelvoSurround]::The input audio channel number is not supported\xEF\xBC\x81\n";
constexpr const char* kLogType = "[KelvoSurround]::kv surround type is not supported.\n";
constexpr const char* kLogReleaseOfNull = "[audio]::kv surround handle is NULL.\n";

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

// Returns the layout for a type and a channel count, or null if there is none.
const Layout* layoutOf(int type, int channels) {
    for (const Layout* const layout : {&sonivex::kBingo2, &sonivex::kBingo51, &sonivex::kBingo71}) {
        if (type == k3dSurroundType && takesChannels(*layout, channels)) return layout;
    }
    for (const Layout* const layout : {&sonivex::kSurround2, &sonivex::kSurround51, &sonivex::kSurround71}) {
        if (type == kMegaBassType && takesChannels(*layout, channels)) return layout;
    }
    return nullptr;
}

void logNoLayout(int type) {
    if (type == k3dSurroundType) {
        log(kLogLineChannelsOf3D, kLogChannels);
    } else if (type == kMegaBassType) {
        log(kLogLineChannelsOfMegaBass, kLogChannels);
    } else {
        log(kLogLineType, kLogType);
    }
}

// Makes a handle without responses. Its layout is null for an unsupported type or channel count. Throws
// std::bad_alloc when memory runs out.
HandlePointer makeHandle(int channels, int sample_rate, int type, int mode, int limiter) {
    HandlePointer handle(new SurroundHandle{});
    handle->channels = channels;
    handle->sampleRate = sample_rate;
    handle->type = type;
    handle->mode = mode;
    handle->limiter = limiter;
    handle->reverb = new ConvolveReverb(2 * Arena::bytesOf<SampleRing>(1));
    handle->layout = layoutOf(type, channels);
    return handle;
}

// Loads the responses of the handle's layout. Throws std::bad_alloc when memory runs out.
void loadResponses(SurroundHandle& handle) {
    const Layout& layout = *handle.layout;
    ConvolveReverb& reverb = *handle.reverb;
    reverb.prepare(layout, handle.channels, sonivex::kSurroundBlockFrames,
                   static_cast<unsigned>(handle.mode));
    if (layout.has_audio_stage) {
        reverb.prepare(sonivex::kAudio, handle.channels, sonivex::kSurroundBlockFrames, 0);
    }
    handle.inRing = reverb.arena().take<SampleRing>(1);
    handle.outRing = reverb.arena().take<SampleRing>(1);
    handle.limiterState = sonivex::makeAu2Limiter().release();
}

// Returns null for an unsupported type or channel count. Throws std::bad_alloc when memory runs out.
void* createHandle(int channels, int sample_rate, int type, int mode, int limiter) {
    HandlePointer handle = makeHandle(channels, sample_rate, type, mode, limiter);
    if (handle->layout == nullptr) {
        logNoLayout(type);
        // A rejected handle is leaked deliberately: the interface documents this leak (sonivex/surround.h).
        static_cast<void>(handle.release());
        return nullptr;  // NOLINT(clang-analyzer-cplusplus.NewDeleteLeaks): the leak is intended
    }
    loadResponses(*handle);
    return handle.release();
}

}  // namespace

namespace sonivex {

bool hasSurroundLayout(int type, int channels) {
    return layoutOf(type, channels) != nullptr;
}

void* createSurround(int channels, int sample_rate_hz, int type, int mode, int limiter) {
    const RoundingToNearest rounding;
    HandlePointer handle = makeHandle(channels, sample_rate_hz, type, mode, limiter);
    if (handle->layout == nullptr) return nullptr;
    loadResponses(*handle);
    return handle.release();
}

void resetSurround(void* handle) {
    auto& surround = *static_cast<SurroundHandle*>(handle);
    clearRing(*surround.inRing);
    clearRing(*surround.outRing);
    surround.reverb->reset();
    au2_limiter_reset(surround.limiterState);
}

}  // namespace sonivex

void* aem_CreateSurround(int channels, int sampleRate, int type, int mode, int limiter) {
    const sonivex::RoundingToNearest rounding;
    try {
        if (sonivex::prepareToThrow()) return createHandle(channels, sampleRate, type, mode, limiter);
    } catch (const std::exception&) {  // is reported below
    }
    log(kLogLineNoMemory, kLogNoMemory);
    return nullptr;
}

int aem_ProcessSurround(void* handle, const short* in, short* out, int frames) {
    if (frames < INT_MIN / 2) return 0;  // twice the count does not fit an int
    const auto* const surround = static_cast<const SurroundHandle*>(handle);
    if (surround == nullptr || surround->layout == nullptr) return 2 * std::min(frames, 0);
    return 2 * sonivex::processSurround(*surround->layout, handle, in, out, frames);
}

void aem_ReleaseSurround(void* handle) {
    if (handle == nullptr) {
        log(kLogLineRelease, kLogReleaseOfNull);
        return;
    }
    FreeHandle()(static_cast<SurroundHandle*>(handle));
}
