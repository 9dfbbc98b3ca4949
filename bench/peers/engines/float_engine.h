// Yardstick of the comparison: the cost of this convolution in single precision, without the requirement that
// all processors give the same bits. Overlap-save in blocks of 240 frames:
//
//   X[c]   = forward transform of the last 480 samples of channel c        once for both ears
//   Y[e]   = sum over channels c and partitions p of X[c, p blocks ago] * H[c, p, e]
//   out[e] = last 240 samples of the inverse transform of Y[e]             no latency
//
// The transforms are FFTW's. Spectra lie in tiles of 16 bins in the order in which they are read. Sums stay
// in registers, in the widest vectors of the processor, with fused multiply-adds where it has them. Layouts
// must have one stage.
#pragma once

#include "engine.h"
#include "material.h"

namespace compare {

/** Makes the engine; planning its transforms takes a while. Throws std::invalid_argument for a layout of more
 *  than one stage. */
std::unique_ptr<Engine> makeFloatEngine(const Layout& layout, const Material& material);

}  // namespace compare
