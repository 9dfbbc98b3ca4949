// FFmpeg's two convolution filters, each as a user would put it into a graph. Layouts of one stage.
//
//   afir       pan (each channel twice) -> afir, a response for every ear of every channel -> pan (sums)
//   headphone  alone, in the frequency domain
//
// afir works in partitions of 256 frames, headphone in blocks of 1024. Both are handed frames of 1024, as a
// player's decoder does; afir takes shorter ones as well, which makes it less late and dearer.
#pragma once

#include "engine.h"
#include "material.h"

namespace compare {

std::unique_ptr<Engine> makeAfirEngine(const Layout& layout, const Material& material);
std::unique_ptr<Engine> makeShortFramesAfirEngine(const Layout& layout, const Material& material);
std::unique_ptr<Engine> makeHeadphoneEngine(const Layout& layout, const Material& material);

}  // namespace compare
