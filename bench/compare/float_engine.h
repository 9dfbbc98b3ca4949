// What convolution of this size costs in single precision when no bit has to be the same elsewhere: the
// yard-stick of the comparison.
//
//   X[c]   = forward transform of the last 480 samples of channel c        once for both ears
//   Y[e]   = sum over channels c and partitions p of X[c, p blocks ago] * H[c, p, e]
//   out[e] = last 240 samples of the inverse transform of Y[e]             no delay
//
// FFTW's transforms; spectra in tiles of 16 bins in the order in which they are read, sums in registers,
// multiply-adds fused where the processor can, in the widest vectors it has. Layouts of one stage.
#pragma once

#include "engine.h"
#include "material.h"

namespace compare {

std::unique_ptr<Engine> makeFloatEngine(const Layout& layout, const Material& material);

}  // namespace compare
