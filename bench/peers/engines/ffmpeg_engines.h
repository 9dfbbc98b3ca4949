// FFmpeg's two convolution filters, each in the graph that a user would build. Layouts must have one stage.
//
//   afir       pan (each channel twice) -> afir, one response per channel and ear -> pan (sums per ear)
//   headphone  alone, in the frequency domain
//
// afir works in partitions of 256 frames, headphone in blocks of 1024. Both get frames of 1024, as a player's
// decoder delivers them. A second afir engine gets frames of 256: less latency at a higher cost.
#pragma once

#include "engine.h"
#include "material.h"

namespace compare {

/** afir with frames of 1024. Throws std::runtime_error if libavfilter rejects the graph. */
std::unique_ptr<Engine> makeAfirEngine(const Layout& layout, const Material& material);
/** afir with frames of 256. Throws std::runtime_error if libavfilter rejects the graph. */
std::unique_ptr<Engine> makeShortFramesAfirEngine(const Layout& layout, const Material& material);
/** headphone with frames of 1024. Throws std::runtime_error if libavfilter rejects the graph. */
std::unique_ptr<Engine> makeHeadphoneEngine(const Layout& layout, const Material& material);

}  // namespace compare
