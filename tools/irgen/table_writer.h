// The C++ source that holds the tables.
#pragma once

#include <string>
#include <vector>

#include "tables.h"

namespace sonivex_irgen {

/** Where the tables come from. */
struct TableOrigin {
    std::string sofa_sha256;
    double head_radius_m;
};

/** Source text: one array `k_` + name for each table, 16 values a line. The same on every machine and day. */
std::string tableSource(const std::vector<TableSet>& sets, const TableOrigin& origin);

}  // namespace sonivex_irgen
