/* The library through its public functions: 16-bit PCM in and out, calls of 240 frames, limiter on. */
#pragma once

#include "engine.h"
#include "material.h"

namespace compare {

std::unique_ptr<Engine> makeOurEngine(const Layout& layout, const Material& material);

}  // namespace compare
