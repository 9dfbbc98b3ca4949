#include "spectral_block.h"

#include "bin_analysis.h"
#include "centre_gains.h"
#include "framing.h"
#include "pcm.h"
#include "unit_scale.h"

namespace sonivex {
namespace {

// Windows and transforms the newest frame of one channel.
void analyse(const DialoguEnhanceHandle& h, const float* in, const ForwardTransform& transform,
             Bin* spectrum) {
    const int hop = h.hopSize;
    float* const frame = h.frame.get();
    for (int i = 0; i < kHopsPerFrame; ++i) {
        const int start = i * hop;
        const int place = h.hops.placeOf(i) * hop;
        applyWindow(in + place, h.sineWindow.get() + start, hop, frame + start);
    }
    transform.run(frame, spectrum);
}

void followPresence(DialoguEnhanceHandle& h) {
    const int bins = h.fftSize / 2 + 1;
    const Fluxes fluxes = analyseBins(h.specLeft.get(), h.specRight.get(), bins,
                                      {h.centre_magnitude.get(), h.side_magnitude.get()},
                                      {h.share_left.get(), h.share_right.get()});
    h.presence = nextPresence(h.presence, fluxes, static_cast<float>(h.voiceLevel));

    // The last bin has no history: its whole magnitude counts as change in every frame.
    h.centre_magnitude.get()[bins - 1] = 0.0F;
    h.side_magnitude.get()[bins - 1] = 0.0F;
}

// Applies the gains to one channel, transforms it back and adds the frame to the overlap sum.
void synthesise(const DialoguEnhanceHandle& h, const float* shares, Bin* spectrum,
                const InverseTransform& transform, float* sum) {
    const GainRange range = {static_cast<float>(h.gainFloor), static_cast<float>(h.gainScale)};
    applyCentreGains(shares, h.fftSize / 2 + 1, h.presence, range, spectrum);
    float* const frame = h.frame.get();
    transform.run(spectrum, frame);

    const int hop = h.hopSize;
    const float* const window = h.sineWindow.get();
    for (int i = 0; i < kHopsPerFrame; ++i) {
        const int start = i * hop;
        const int place = h.hops.placeOf(i) * hop;
        const bool is_first_there = i == kHopsPerFrame - 1;
        const auto add = is_first_there ? startOverlap : overlapAdd;
        add(frame + start, window + start, hop, sum + place);
    }
}

}  // namespace

void processDialogueBlock(DialoguEnhanceHandle& h, std::int16_t* block) {
    const int hop = h.hopSize;
    const int samples = 2 * hop;
    h.hops.advance();

    int16ToUnitScale(block, samples, h.blockIn);
    const int newest = h.hops.placeOf(kHopsPerFrame - 1) * hop;
    splitStereo(h.blockIn, hop, h.inLeft.get() + newest, h.inRight.get() + newest);

    analyse(h, h.inLeft.get(), h.forwardTx[0], h.specLeft.get());
    analyse(h, h.inRight.get(), h.forwardTx[1], h.specRight.get());
    followPresence(h);
    synthesise(h, h.share_left.get(), h.specLeft.get(), h.inverseTx[0], h.outLeft.get());
    synthesise(h, h.share_right.get(), h.specRight.get(), h.inverseTx[1], h.outRight.get());

    const int oldest = h.hops.placeOf(0) * hop;
    emitStereo(h.outLeft.get() + oldest, h.outRight.get() + oldest, hop, h.blockOut);
    unitScaleToInt16Units(h.blockOut, samples, h.blockIn);
    au2_limiter_proc(h.limiter.get(), h.blockIn, samples, h.blockOut);
    floatToInt16(h.blockOut, samples, block);
}

}  // namespace sonivex
