#include "sonivex/dialoguenhance.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <new>

#include "dialogue_control.h"
#include "dialoguenhance_handle.h"
#include "effect_log.h"
#include "effect_timing.h"
#include "framing.h"
#include "prepare_to_throw.h"
#include "rounding.h"
#include "sample_ring.h"
#include "serve_call.h"
#include "spectral_block.h"

namespace {

constexpr int kChannels = 2;

static_assert(kChannels * sonivex::kDialogueLongestHop_frames == sonivex::kDialogueMaxBlockSamples);

// Source name and line numbers are part of the log lines, see effect_log.h.
constexpr const char* kLogSource = "dialoguenhance";
constexpr int kLogLineProcess = 694;
constexpr int kLogLineRelease = 758;
constexpr const char* kLogNullHandle = "[audio]::kv dialoguenhance handle is NULL.\n";

bool isFiniteAsFloat(double number) {
    return std::isfinite(static_cast<float>(number));
}

// Returns false when memory runs out.
bool allocateArrays(DialoguEnhanceHandle& handle) {
    const int points = handle.fftSize;
    const int bins = points / 2 + 1;
    for (auto* array : {&handle.sineWindow, &handle.inLeft, &handle.inRight, &handle.outLeft,
                        &handle.outRight, &handle.frame}) {
        if (!sonivex::allocate(*array, points)) return false;
    }
    for (auto* array : {&handle.specLeft, &handle.specRight}) {
        if (!sonivex::allocate(*array, bins)) return false;
    }
    for (auto* array :
         {&handle.share_left, &handle.share_right, &handle.centre_magnitude, &handle.side_magnitude}) {
        if (!sonivex::allocate(*array, bins)) return false;
    }
    return true;
}

// Returns false when memory runs out.
bool initTransforms(DialoguEnhanceHandle& handle) {
    for (auto& transform : handle.forwardTx) {
        if (!transform.init(handle.fftSize)) return false;
    }
    for (auto& transform : handle.inverseTx) {
        if (!transform.init(handle.fftSize)) return false;
    }
    return true;
}

// Returns false when memory runs out.
bool makeLimiter(DialoguEnhanceHandle& handle) {
    try {
        handle.limiter = sonivex::makeAu2Limiter();
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

// Takes one block from the input ring through the effect to the output ring.
void processBlock(DialoguEnhanceHandle& handle, int block_samples) {
    std::int16_t block[sonivex::kDialogueMaxBlockSamples];
    sonivex::readSamples(handle.inRing, block, block_samples);
    sonivex::processDialogueBlock(handle, block);
    sonivex::writeSamples(handle.outRing, block, block_samples);
}

// Prepares a zeroed handle for a rate. Returns false when memory runs out.
bool prepare(DialoguEnhanceHandle& handle, int channels, int sample_rate) {
    handle.channels = channels;
    handle.sampleRate = sample_rate;
    handle.hopSize = sonivex::dialogueTiming(sample_rate).block_frames;
    handle.fftSize = handle.hopSize * sonivex::kHopsPerFrame;

    if (!allocateArrays(handle) || !initTransforms(handle) || !makeLimiter(handle)) return false;
    sonivex::makeSineWindow(handle.fftSize, handle.sineWindow.get());
    return true;
}

}  // namespace

namespace sonivex {

void* createDialogue(int sample_rate_hz, double voice_level) {
    const RoundingToNearest rounding;
    std::unique_ptr<DialoguEnhanceHandle> handle(new (std::nothrow) DialoguEnhanceHandle{});
    if (handle == nullptr || !prepare(*handle, kChannels, sample_rate_hz)) return nullptr;
    handle->gainFloor = 1.0;
    handle->gainScale = 1.0;
    handle->voiceLevel = voice_level;
    return handle.release();
}

void resetDialogue(void* handle) {
    auto& enhancer = *static_cast<DialoguEnhanceHandle*>(handle);
    clearRing(enhancer.inRing);
    clearRing(enhancer.outRing);
    enhancer.hops = {};
    const auto points = static_cast<std::size_t>(enhancer.fftSize);
    for (auto* ring : {&enhancer.inLeft, &enhancer.inRight, &enhancer.outLeft, &enhancer.outRight}) {
        std::fill_n(ring->get(), points, 0.0F);
    }
    for (auto* magnitudes : {&enhancer.centre_magnitude, &enhancer.side_magnitude}) {
        std::fill_n(magnitudes->get(), points / 2 + 1, 0.0F);
    }
    enhancer.presence = 0.0F;
    au2_limiter_reset(enhancer.limiter.get());
}

void setDialogueVoiceLevel(void* handle, double voice_level) {
    static_cast<DialoguEnhanceHandle*>(handle)->voiceLevel = voice_level;
}

}  // namespace sonivex

void* aem_CreateDialoguEnhance(int channels, int sampleRate, double gainFloor, double gainScale,
                               double voiceLevel) {
    const sonivex::RoundingToNearest rounding;
    if (!isFiniteAsFloat(gainFloor) || !isFiniteAsFloat(gainScale) || !isFiniteAsFloat(voiceLevel)) {
        return nullptr;
    }
    std::unique_ptr<DialoguEnhanceHandle> handle;
    if (sonivex::prepareToThrow()) handle.reset(new (std::nothrow) DialoguEnhanceHandle{});
    if (handle == nullptr) {
        std::puts("[audio]::kv dialoguenhance handle is created failed.");
        return nullptr;
    }
    if (!prepare(*handle, channels, sampleRate)) return nullptr;
    handle->gainFloor = gainFloor;
    handle->gainScale = gainScale;
    handle->voiceLevel = voiceLevel;
    return handle.release();
}

int aem_ProcessDialoguEnhance(void* handle, const short* in, short* out, int frames, int /*sampleRate*/) {
    const sonivex::RoundingToNearest rounding;
    if (handle == nullptr) {
        sonivex::logEffectMessage(kLogSource, kLogLineProcess, kLogNullHandle);
        return -1;
    }
    if (in == nullptr || out == nullptr) return -1;
    const std::int64_t product = std::int64_t{frames} * kChannels;
    if (product > std::numeric_limits<int>::max() || product < std::numeric_limits<int>::min()) return -1;
    const int samples = static_cast<int>(product);
    if (samples < 1) return samples;

    auto& enhancer = *static_cast<DialoguEnhanceHandle*>(handle);
    const int block_samples = kChannels * enhancer.hopSize;
    sonivex::serveCall(enhancer.inRing, enhancer.outRing, {in, samples}, {out, samples}, block_samples,
                       [&](int /*blocks_waiting*/) {
                           processBlock(enhancer, block_samples);
                           return 1;
                       });
    return samples;
}

void aem_ReleaseDialoguEnhance(void* handle) {
    if (handle == nullptr) {
        sonivex::logEffectMessage(kLogSource, kLogLineRelease, kLogNullHandle);
        return;
    }
    delete static_cast<DialoguEnhanceHandle*>(handle);
}
