#include "surround_pipelines.h"

#include <algorithm>
#include <cstdint>
#include <limits>

#include "effect_log.h"
#include "layouts.h"
#include "pcm.h"
#include "rounding.h"
#include "serve_call.h"
#include "surround_handle.h"
#include "unit_scale.h"

namespace sonivex {
namespace {

constexpr int kEars = 2;
constexpr int kBlockOutSamples = kEars * kSurroundBlockFrames;

bool fitsInt(std::int64_t number) {
    return number <= std::numeric_limits<int>::max();
}

// Converts one block. The limiter follows the peak of each call's samples, so it gets one block per call.
void toInt16(SurroundHandle& handle, float* samples, std::int16_t* out) {
    if (handle.limiter == 1) {
        unitScaleToInt16Units(samples, kBlockOutSamples, handle.inBlock);
        au2_limiter_proc(handle.limiterState, handle.inBlock, kBlockOutSamples, samples);
        floatToInt16(samples, kBlockOutSamples, out);
    } else {
        clipToInt16(samples, kBlockOutSamples, out);
    }
}

// Renders as many of the waiting blocks as one pass takes. Returns their count.
int renderBlocks(SurroundHandle& handle, int blocks_waiting) {
    const Layout& layout = *handle.layout;
    const int blocks = std::min(blocks_waiting, kSurroundMaxBlocks);
    std::int16_t in[kSurroundMaxChannels * kSurroundMaxFrames];
    const int in_samples = layout.width * kSurroundBlockFrames * blocks;
    readSamples(*handle.inRing, in, in_samples);
    int16ToUnitScale(in, in_samples, handle.inBlock);

    handle.reverb->process(layout, handle.inBlock, handle.outBlock, kSurroundBlockFrames, blocks);
    if (layout.has_audio_stage) {
        handle.reverb->process(kAudio, handle.outBlock, handle.outBlock, kSurroundBlockFrames, blocks);
    }

    float* rendered = handle.outBlock;
    for (int block = 0; block < blocks; ++block, rendered += kBlockOutSamples) {
        std::int16_t out[kBlockOutSamples];
        toInt16(handle, rendered, out);
        writeSamples(*handle.outRing, out, kBlockOutSamples);
    }
    return blocks;
}

}  // namespace

int processSurround(const Layout& layout, void* handle, const short* in, short* out, int frames) {
    const RoundingToNearest rounding;
    if (handle == nullptr) {
        logEffectMessage(kSurroundLogSource, layout.log_line, layout.log_null_handle);
        return 0;
    }
    auto& surround = *static_cast<SurroundHandle*>(handle);
    if (surround.layout != &layout) return std::min(frames, 0);
    const int taken_frames = std::max(frames, 0);  // below 1, neither buffer is read or written
    const std::int64_t in_samples = std::int64_t{taken_frames} * layout.width;
    if (frames > 0 && (in == nullptr || out == nullptr || !fitsInt(in_samples))) return 0;
    serveCall(*surround.inRing, *surround.outRing, {in, static_cast<int>(in_samples)},
              {out, taken_frames * kEars}, layout.width * kSurroundBlockFrames,
              [&](int blocks_waiting) { return renderBlocks(surround, blocks_waiting); });
    return frames;
}

}  // namespace sonivex

// The parameter types are part of the exported names, so `in` stays `short*` although it is only read.
int ProcessSurround_Kelvo_Bingo_2(void* handle, short* in, short* out, int frames) {
    return sonivex::processSurround(sonivex::kBingo2, handle, in, out, frames);
}

int ProcessSurround_Kelvo_Bingo_5_1(void* handle, short* in, short* out, int frames) {
    return sonivex::processSurround(sonivex::kBingo51, handle, in, out, frames);
}

int ProcessSurround_Kelvo_Bingo_7_1(void* handle, short* in, short* out, int frames) {
    return sonivex::processSurround(sonivex::kBingo71, handle, in, out, frames);
}

int ProcessSurround_Kelvo_Surround_2_To_Nangua(void* handle, short* in, short* out, int frames) {
    return sonivex::processSurround(sonivex::kSurround2, handle, in, out, frames);
}

int ProcessSurround_Kelvo_Surround_5_1_To_Nangua(void* handle, short* in, short* out, int frames) {
    return sonivex::processSurround(sonivex::kSurround51, handle, in, out, frames);
}

int ProcessSurround_Kelvo_Surround_7_1_To_Nangua(void* handle, short* in, short* out, int frames) {
    return sonivex::processSurround(sonivex::kSurround71, handle, in, out, frames);
}
