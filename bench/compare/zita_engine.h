// zita-convolver with partitions of 256 frames throughout. A stage follows the other.
#pragma once

#include "engine.h"
#include "material.h"

namespace compare {

std::unique_ptr<Engine> makeZitaEngine(const Layout& layout, const Material& material);

/** As "4.0.3". */
std::string zitaVersion();

}  // namespace compare
