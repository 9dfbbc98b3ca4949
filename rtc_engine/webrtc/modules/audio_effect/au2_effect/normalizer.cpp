#include "sonivex/normalizer.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <memory>
#include <new>

#include "au2_limiter_owner.h"
#include "effect_log.h"
#include "effect_timing.h"
#include "gain_stage.h"
#include "mixer.h"
#include "normalizer_control.h"
#include "pcm.h"
#include "prepare_to_throw.h"
#include "rounding.h"
#include "sample_ring.h"
#include "serve_call.h"

namespace {

constexpr int kBlockFrames = sonivex::kNormalizerTimingBlock_frames;
constexpr int kMaxBlockSamples = 10240;
constexpr int kMaxChannels = kMaxBlockSamples / kBlockFrames;
constexpr float kStartGainDb = 20.0F;

// Source name and line numbers are part of the log lines, see effect_log.h.
constexpr const char* kLogSource = "normalizer";
constexpr int kLogLineProcess = 188;
constexpr int kLogLineRelease = 239;
constexpr const char* kLogNullHandle = "[audio]::kv normalizer handle is NULL.\n";

// The whole state of one normalizer. The all-zero record is empty and can be destroyed.
struct NormalizerHandle {
    ~NormalizerHandle() { mixfree(mixer); }

    std::int32_t channels;
    std::int32_t sampleRate;
    MixerState* mixer;  // owned
    sonivex::Au2LimiterOwner limiter;
    bool mixes_in_own_memory;  // false: the mixer allocates its working blocks
    alignas(sonivex::kCacheLineBytes) float blockIn[kMaxBlockSamples];
    alignas(sonivex::kCacheLineBytes) float blockOut[kMaxBlockSamples];
    sonivex::SampleRing inRing;
    sonivex::SampleRing outRing;
};

void* reportFailedCreation() {
    std::puts("[audio]::kv normalizer handle is created failed.");
    return nullptr;
}

// Takes one block from the input ring through gain stage and output limiter to the output ring.
void processBlock(NormalizerHandle& handle, int block_samples) {
    alignas(sonivex::kCacheLineBytes) std::int16_t block[kMaxBlockSamples];
    alignas(sonivex::kCacheLineBytes) std::int16_t gained[kMaxBlockSamples];
    sonivex::readSamples(handle.inRing, block, block_samples);

    if (handle.mixes_in_own_memory) {
        // The mixer treats all channels as one sequence. The two arrays are free until it is done.
        float* const mono = handle.blockOut;
        applyGainStage(handle.mixer, block, block_samples, {handle.blockIn, &mono}, gained, kStartGainDb);
    } else {
        // If the mixer gets no memory, it writes nothing and the block stays silent.
        std::fill_n(gained, block_samples, std::int16_t{0});
        ddagcproc_dB(handle.mixer, block, block_samples, gained, kStartGainDb);
    }

    sonivex::int16ToFloat(gained, block_samples, handle.blockIn);
    au2_limiter_proc(handle.limiter.get(), handle.blockIn, block_samples, handle.blockOut);
    sonivex::floatToInt16(handle.blockOut, block_samples, block);
    sonivex::writeSamples(handle.outRing, block, block_samples);
}

void setUpMixer(MixerState* mixer) {
    mixinit(mixer, 1, 0, 1.0F);
}

// Returns null when memory runs out. `make_mixer` is mixcreat or a function that only allocates.
std::unique_ptr<NormalizerHandle> makeHandle(int channels, int sample_rate, int (*make_mixer)(MixerState**)) {
    std::unique_ptr<NormalizerHandle> handle(new (std::nothrow) NormalizerHandle{});
    if (handle == nullptr) return nullptr;
    handle->channels = channels;
    handle->sampleRate = sample_rate;

    make_mixer(&handle->mixer);
    if (handle->mixer == nullptr) return nullptr;
    setUpMixer(handle->mixer);
    try {
        handle->limiter = sonivex::makeAu2Limiter();
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
    return handle;
}

}  // namespace

namespace sonivex {

void* createNormalizer(int channels, int sample_rate_hz) {
    const RoundingToNearest rounding;
    const auto allocate_only = [](MixerState** mixer) {
        *mixer = makeMixer();
        return 0;
    };
    auto handle = makeHandle(channels, sample_rate_hz, allocate_only);
    if (handle == nullptr) return nullptr;
    handle->mixes_in_own_memory = true;
    return handle.release();
}

void resetNormalizer(void* handle) {
    auto& normalizer = *static_cast<NormalizerHandle*>(handle);
    clearRing(normalizer.inRing);
    clearRing(normalizer.outRing);
    setUpMixer(normalizer.mixer);
    au2_limiter_reset(normalizer.limiter.get());
}

}  // namespace sonivex

void* aem_CreateNormalizer(int channels, int sampleRate) {
    const sonivex::RoundingToNearest rounding;
    if (!sonivex::prepareToThrow()) return reportFailedCreation();
    auto handle = makeHandle(channels, sampleRate, mixcreat);
    return handle == nullptr ? reportFailedCreation() : handle.release();
}

int aem_ProcessNormalizer(void* handle, const short* in, short* out, int frames, int channels) {
    const sonivex::RoundingToNearest rounding;
    if (handle == nullptr) {
        sonivex::logEffectMessage(kLogSource, kLogLineProcess, kLogNullHandle);
        return -1;
    }
    if (in == nullptr || out == nullptr) return -1;

    const std::int64_t product = std::int64_t{frames} * std::int64_t{channels};
    if (product > std::numeric_limits<int>::max() || product < std::numeric_limits<int>::min()) return -1;
    const int samples = static_cast<int>(product);
    if (channels < 1 || channels > kMaxChannels || samples < 1) return samples;

    auto& normalizer = *static_cast<NormalizerHandle*>(handle);
    const int block_samples = channels * kBlockFrames;
    sonivex::serveCall(normalizer.inRing, normalizer.outRing, {in, samples}, {out, samples}, block_samples,
                       [&](int /*blocks_waiting*/) {
                           processBlock(normalizer, block_samples);
                           return 1;
                       });
    return samples;
}

void aem_ReleaseNormalizer(void* handle) {
    if (handle == nullptr) {
        sonivex::logEffectMessage(kLogSource, kLogLineRelease, kLogNullHandle);
        return;
    }
    delete static_cast<NormalizerHandle*>(handle);
}
