/* FFmpeg's two convolution filters, each as a user would put it into a graph. Layouts of one stage.
 *
 *   afir       pan (each channel twice) -> afir, a response for every ear of every channel -> pan (sums)
 *   headphone  alone, in the frequency domain
 *
 * afir works in partitions of 256 frames, headphone in blocks of 1024. */
#pragma once

#include "engine.h"
#include "material.h"

namespace compare {

std::unique_ptr<Engine> makeAfirEngine(const Layout& layout, const Material& material);
std::unique_ptr<Engine> makeHeadphoneEngine(const Layout& layout, const Material& material);

}  // namespace compare
