// The library's scheme without vectors, one convolver for each path: what its fast path is measured against,
// and has to equal to the bit. Layouts of one stage.
#pragma once

#include "engine.h"
#include "material.h"

namespace compare {

std::unique_ptr<Engine> makeScalarEngine(const Layout& layout, const Material& material);

}  // namespace compare
