// Runs a whole signal through one effect, in calls that cause no start-up delay.
#pragma once

#include "support/signals/signals.h"

namespace study {

constexpr int kRate_hz = 48000;

/** A surround type with its room. */
struct SurroundType {
    const char* name;
    int type;
    int mode;
};
constexpr SurroundType kSurroundTypes[] = {
    {"3DSurround", 1, 1}, {"MegaBass mode 1", 13, 1}, {"MegaBass mode 2", 13, 2}, {"MegaBass mode 3", 13, 3}};

// Each function takes and returns interleaved samples and pads the input with silence to whole calls. The
// output is at most one call longer than the input. @throw std::runtime_error if the effect cannot be created

/** Renders for headphones. @param in [frames][channels] @param channels 2, 6 or 8. @return stereo */
test::Pcm surroundOf(const test::Pcm& in, int channels, const SurroundType& type);

/** Enhances the dialogue of stereo, without the latency of three hops; the end of the input is missing. */
test::Pcm dialogueOf(const test::Pcm& in, double voice_level);

/** Normalizes. @param in [frames][channels] */
test::Pcm normalizedOf(const test::Pcm& in, int channels);

}  // namespace study
