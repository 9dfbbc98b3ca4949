#include "surround_pipelines.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "effect_log.h"
#include "pcm.h"
#include "surround_handle.h"
#include "unit_scale.h"

namespace {

using sonivex::kSurroundBlockFrames;
using sonivex::kSurroundMaxChannels;

constexpr int kEars = 2;
constexpr int kOutSamples = kEars * kSurroundBlockFrames;

constexpr const char* kLogNullHandleOfBingo2 = "[KelvoSurround]::kv surround handle is NULL.\n";

struct Pipeline {
    int width = 0;  // samples of an input frame
    void (*render)(ConvolveReverb& reverb, const float* in, float* out) = nullptr;
    int log_line = 0;  // part of the log lines, see effect_log.h
    const char* log_null_handle = sonivex::kSurroundLogNullHandle;
};

/* Mono streams bring two samples a frame as well. */
bool isMadeFor(const SurroundHandle& handle, int width) {
    return handle.channels == width || (handle.channels == 1 && width == 2);
}

bool fitsInt(std::int64_t number) {
    return number <= std::numeric_limits<int>::max() && number >= std::numeric_limits<int>::min();
}

void toInt16(SurroundHandle& handle, std::int16_t* out) {
    if (handle.limiter == 1) {
        sonivex::unitScaleToInt16Units(handle.outBlock, kOutSamples, handle.inBlock);
        au2_limiter_proc(handle.limiterState, handle.inBlock, kOutSamples, handle.outBlock);
        sonivex::floatToInt16(handle.outBlock, kOutSamples, out);
    } else {
        sonivex::clipToInt16(handle.outBlock, kOutSamples, out);
    }
}

void processBlock(SurroundHandle& handle, const Pipeline& pipeline) {
    std::int16_t in[kSurroundMaxChannels * kSurroundBlockFrames];
    const int in_samples = pipeline.width * kSurroundBlockFrames;
    sonivex::readSamples(handle.inRing, in, in_samples);
    sonivex::int16ToUnitScale(in, in_samples, handle.inBlock);

    pipeline.render(*handle.reverb, handle.inBlock, handle.outBlock);

    std::int16_t out[kOutSamples];
    toInt16(handle, out);
    sonivex::writeSamples(handle.outRing, out, kOutSamples);
}

int run(const Pipeline& pipeline, void* handle, const short* in, short* out, int frames) {
    if (handle == nullptr) {
        sonivex::logEffectMessage(sonivex::kSurroundLogSource, pipeline.log_line, pipeline.log_null_handle);
        return 0;
    }
    auto& surround = *static_cast<SurroundHandle*>(handle);
    if (in == nullptr || out == nullptr || !isMadeFor(surround, pipeline.width)) return 0;
    const std::int64_t in_samples = std::int64_t{frames} * pipeline.width;
    if (!fitsInt(in_samples)) return 0;
    const int out_samples = frames * kEars;

    sonivex::writeSamples(surround.inRing, in, static_cast<int>(in_samples));
    while (sonivex::fillLevel(surround.inRing) >= pipeline.width * kSurroundBlockFrames) {
        processBlock(surround, pipeline);
    }
    if (frames < 1) return frames;
    if (sonivex::fillLevel(surround.outRing) >= out_samples) {
        sonivex::readSamples(surround.outRing, out, out_samples);
    } else {
        std::fill_n(out, out_samples, short{0});
    }
    return frames;
}

constexpr Pipeline kBingo2 = {
    .width = 2,
    .render = [](ConvolveReverb& reverb, const float* in,
                 float* out) { reverb.process_Kelvo_Bingo_2(in, out, kSurroundBlockFrames); },
    .log_line = 194,
    .log_null_handle = kLogNullHandleOfBingo2};

constexpr Pipeline kBingo51 = {
    .width = 6,
    .render = [](ConvolveReverb& reverb, const float* in,
                 float* out) { reverb.process_Kelvo_Bingo_5_1(in, out, kSurroundBlockFrames); },
    .log_line = 276};

constexpr Pipeline kBingo71 = {
    .width = 8,
    .render = [](ConvolveReverb& reverb, const float* in,
                 float* out) { reverb.process_Kelvo_Bingo_7_1(in, out, kSurroundBlockFrames); },
    .log_line = 360};

constexpr Pipeline kSurround2 = {.width = 2,
                                 .render =
                                     [](ConvolveReverb& reverb, const float* in, float* out) {
                                         reverb.process_Kelvo_Surround_2(in, out, kSurroundBlockFrames);
                                         reverb.process_kelvo_audio_(out, out, kSurroundBlockFrames);
                                     },
                                 .log_line = 444};

constexpr Pipeline kSurround51 = {.width = 6,
                                  .render =
                                      [](ConvolveReverb& reverb, const float* in, float* out) {
                                          reverb.process_Kelvo_Surround_5_1(in, out, kSurroundBlockFrames);
                                          reverb.process_kelvo_audio_(out, out, kSurroundBlockFrames);
                                      },
                                  .log_line = 527};

constexpr Pipeline kSurround71 = {.width = 8,
                                  .render =
                                      [](ConvolveReverb& reverb, const float* in, float* out) {
                                          reverb.process_Kelvo_Surround_7_1(in, out, kSurroundBlockFrames);
                                          reverb.process_kelvo_audio_(out, out, kSurroundBlockFrames);
                                      },
                                  .log_line = 612};

}  // namespace

/* Their parameters are part of the exported names, hence `short*` for what is only read. */
int ProcessSurround_Kelvo_Bingo_2(void* handle, short* in, short* out, int frames) {
    return run(kBingo2, handle, in, out, frames);
}

int ProcessSurround_Kelvo_Bingo_5_1(void* handle, short* in, short* out, int frames) {
    return run(kBingo51, handle, in, out, frames);
}

int ProcessSurround_Kelvo_Bingo_7_1(void* handle, short* in, short* out, int frames) {
    return run(kBingo71, handle, in, out, frames);
}

int ProcessSurround_Kelvo_Surround_2_To_Nangua(void* handle, short* in, short* out, int frames) {
    return run(kSurround2, handle, in, out, frames);
}

int ProcessSurround_Kelvo_Surround_5_1_To_Nangua(void* handle, short* in, short* out, int frames) {
    return run(kSurround51, handle, in, out, frames);
}

int ProcessSurround_Kelvo_Surround_7_1_To_Nangua(void* handle, short* in, short* out, int frames) {
    return run(kSurround71, handle, in, out, frames);
}
