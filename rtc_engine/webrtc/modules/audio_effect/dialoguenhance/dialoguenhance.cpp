#include "sonivex/dialoguenhance.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <new>

#include "dialoguenhance_handle.h"
#include "effect_log.h"
#include "framing.h"
#include "rounding.h"
#include "sample_ring.h"
#include "serve_call.h"
#include "spectral_block.h"

namespace {

constexpr int kChannels = 2;

// A frame lasts about 43 ms at 48, 96 and 192 kHz.
constexpr int kPoints = 2048;
constexpr int kPointsOfHighRates = 4096;
constexpr int kPointsOfVeryHighRates = 8192;
constexpr int kHighRatesAboveHz = 50000;
constexpr int kVeryHighRatesAboveHz = 100000;

static_assert(kChannels * kPointsOfVeryHighRates / sonivex::kHopsPerFrame ==
              sonivex::kDialogueMaxBlockSamples);

// Source name and line numbers are part of the log lines, see effect_log.h.
constexpr const char* kLogSource = "dialoguenhance";
constexpr int kLogLineProcess = 694;
constexpr int kLogLineRelease = 758;
constexpr const char* kLogNullHandle = "[audio]::kv dialoguenhance handle is NULL.\n";

int pointsOf(int sample_rate_hz) {
    if (sample_rate_hz > kVeryHighRatesAboveHz) return kPointsOfVeryHighRates;
    if (sample_rate_hz > kHighRatesAboveHz) return kPointsOfHighRates;
    return kPoints;
}

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

}  // namespace

void* aem_CreateDialoguEnhance(int channels, int sampleRate, double gainFloor, double gainScale,
                               double voiceLevel) {
    const sonivex::RoundingToNearest rounding;
    if (!isFiniteAsFloat(gainFloor) || !isFiniteAsFloat(gainScale) || !isFiniteAsFloat(voiceLevel)) {
        return nullptr;
    }
    std::unique_ptr<DialoguEnhanceHandle> handle(new (std::nothrow) DialoguEnhanceHandle{});
    if (handle == nullptr) {
        std::puts("[audio]::kv dialoguenhance handle is created failed.");
        return nullptr;
    }
    handle->channels = channels;
    handle->sampleRate = sampleRate;
    handle->gainFloor = gainFloor;
    handle->gainScale = gainScale;
    handle->voiceLevel = voiceLevel;
    handle->fftSize = pointsOf(sampleRate);
    handle->hopSize = handle->fftSize / sonivex::kHopsPerFrame;

    if (!allocateArrays(*handle) || !initTransforms(*handle) || !makeLimiter(*handle)) return nullptr;
    sonivex::makeSineWindow(handle->fftSize, handle->sineWindow.get());
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
