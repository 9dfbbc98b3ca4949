#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "effect.h"

namespace sonivex_tool {

/** Accepts names of effects separated by commas, no two alike. */
CLI::Validator effectChain();

/** Returns the effects of a text that effectChain() accepts, in its order. */
std::vector<const Effect*> chainOf(const std::string& names);

}  // namespace sonivex_tool
