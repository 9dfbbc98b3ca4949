// Effects behind the common interface, one record for each kind and setting that the tests go through.
//
//     for (const test::CommonEffect& kind : test::commonEffects()) {
//         SCOPED_TRACE(kind.name);
//         const test::EffectOwner effect = kind.make();
//         ..
//     }
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "sonivex/effect.h"
#include "support/signals/signals.h"

namespace test {

struct ReleaseEffect {
    void operator()(SonivexEffect* effect) const { sonivex_release(effect); }
};
using EffectOwner = std::unique_ptr<SonivexEffect, ReleaseEffect>;

/** One kind of effect with its settings. */
struct CommonEffect {
    std::string name;
    int channels_in;
    int channels_out;
    int block_frames;
    int own_delay_frames;  // beyond the queueing of blocks
    std::function<EffectOwner()> make;
    /** Passes interleaved input through the aem_ functions of a new handle, in calls of equal length; the
     * rest after the last whole call is not processed. */
    std::function<Pcm(const Pcm& in, int call_frames)> by_aem_functions;
};

/** Every effect, with all of surround's layouts, rooms and outputs, and all of dialogue enhancement's
 * transforms. */
const std::vector<CommonEffect>& commonEffects();

/** One setting of each effect, for tests that take long. */
std::vector<CommonEffect> fewCommonEffects();

EffectOwner makeSurround(int channels, int type = 1, int mode = 1, int limiter = 1, int rate_hz = 48000);
EffectOwner makeDialogue(int rate_hz = 48000, double voice_level = 1.0);
EffectOwner makeNormalizer(int channels, int rate_hz = 48000);

/** Planes of floats, full scale 1. */
using Planes = std::vector<std::vector<float>>;

/** Splits interleaved samples into planes. */
Planes planesOf(const Pcm& samples, int channels);
/** Interleaves planes; every sample must be an integer / 32768. */
Pcm samplesOf(const Planes& planes);

/** Passes planes through sonivex_stream_float in calls of these sizes, which must sum up to their length. */
Planes streamed(SonivexEffect* effect, const Planes& in, const std::vector<int>& call_sizes);
/** Passes interleaved samples through sonivex_process_int16 in calls of these sizes. */
Pcm processed(SonivexEffect* effect, const Pcm& in, const std::vector<int>& call_sizes);

/** Delays interleaved samples and keeps their number. */
Pcm delayed(const Pcm& samples, int frames, int channels);

}  // namespace test
