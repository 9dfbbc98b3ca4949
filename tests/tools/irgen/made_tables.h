#pragma once

#include <vector>

#include "tables.h"

namespace irgen_test {

/** The tables of the packaged head, made once; packagedHead() must not be null. */
const std::vector<sonivex_irgen::TableSet>& madeTables();

}  // namespace irgen_test
