#include "spectral_block.h"

#include <algorithm>

#include "centre_gains.h"
#include "centre_presence.h"
#include "framing.h"
#include "pcm.h"
#include "unit_scale.h"

namespace sonivex {
namespace {

void analyse(DialoguEnhanceHandle& h) {
    const int points = h.fftSize;
    const int hop = h.hopSize;
    float* const left = h.staging;
    float* const right = h.staging + hop;
    splitStereo(h.blockIn, hop, left, right);
    appendHop(left, hop, h.inLeft.get(), points);
    appendHop(right, hop, h.inRight.get(), points);
    applyWindow(h.inLeft.get(), h.sineWindow.get(), points, h.frameLeft.get());
    applyWindow(h.inRight.get(), h.sineWindow.get(), points, h.frameRight.get());
    h.forwardTx[0].run(h.frameLeft.get(), h.specLeft.get());
    h.forwardTx[1].run(h.frameRight.get(), h.specRight.get());
}

void followPresence(DialoguEnhanceHandle& h) {
    const int bins = h.fftSize / 2 + 1;
    estimateCentre(h.specLeft.get(), h.specRight.get(), bins, h.centreSpec.get());
    magnitudes(h.centreSpec.get(), bins, h.centreMagnitude.get());
    sideMagnitudes(h.specLeft.get(), h.specRight.get(), bins, h.sideMagnitude.get());
    const Fluxes fluxes = spectralFluxes(h.centreMagnitude.get(), h.prevCentreMagnitude.get(),
                                         h.sideMagnitude.get(), h.prevSideMagnitude.get(), bins);
    h.presence = nextPresence(h.presence, fluxes, static_cast<float>(h.voiceLevel));

    /* The last bin has no history: its whole magnitude counts as change in every frame. */
    std::copy_n(h.centreMagnitude.get(), bins - 1, h.prevCentreMagnitude.get());
    std::copy_n(h.sideMagnitude.get(), bins - 1, h.prevSideMagnitude.get());
}

void synthesise(DialoguEnhanceHandle& h) {
    const int points = h.fftSize;
    const int hop = h.hopSize;
    const GainRange range = {static_cast<float>(h.gainFloor), static_cast<float>(h.gainScale)};
    applyCentreGains(h.specLeft.get(), h.specRight.get(), points / 2 + 1, h.presence, range, h.workLeft.get(),
                     h.workRight.get());

    /* The spectra are done with; the output frames take their place. */
    auto* const left = reinterpret_cast<float*>(h.specLeft.get());
    auto* const right = reinterpret_cast<float*>(h.specRight.get());
    h.inverseTx[0].run(h.workLeft.get(), left);
    h.inverseTx[1].run(h.workRight.get(), right);

    appendSilence(hop, h.outLeft.get(), points);
    appendSilence(hop, h.outRight.get(), points);
    overlapAdd(left, h.sineWindow.get(), points, h.outLeft.get());
    overlapAdd(right, h.sineWindow.get(), points, h.outRight.get());
    emitStereo(h.outLeft.get(), h.outRight.get(), hop, h.blockOut);
}

}  // namespace

void processDialogueBlock(DialoguEnhanceHandle& handle, std::int16_t* block) {
    const int samples = 2 * handle.hopSize;
    int16ToUnitScale(block, samples, handle.blockIn);
    analyse(handle);
    followPresence(handle);
    synthesise(handle);
    unitScaleToInt16Units(handle.blockOut, samples, handle.blockIn);
    au2_limiter_proc(handle.limiter.get(), handle.blockIn, samples, handle.blockOut);
    floatToInt16(handle.blockOut, samples, block);
}

}  // namespace sonivex
