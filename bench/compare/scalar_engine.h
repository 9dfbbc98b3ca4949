// The library's algorithm without vectors, one convolver per path. The library's vector code is measured
// against it and must give the same bits. Layouts must have one stage.
#pragma once

#include "engine.h"
#include "material.h"

namespace compare {

/** @param material must outlive the engine
 *  Throws std::invalid_argument for a layout of more than one stage. */
std::unique_ptr<Engine> makeScalarEngine(const Layout& layout, const Material& material);

}  // namespace compare
