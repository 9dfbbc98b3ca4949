// zita-convolver with uniform partitions of 256 frames. The stages of a layout run one after the other.
#pragma once

#include "engine.h"
#include "material.h"

namespace compare {

/** Throws std::runtime_error if zita-convolver rejects a response or does not start. */
std::unique_ptr<Engine> makeZitaEngine(const Layout& layout, const Material& material);

/** Version of the linked library, such as "4.0". */
std::string zitaVersion();

}  // namespace compare
