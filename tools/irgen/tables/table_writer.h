// Writer of the C++ source file that holds the tables.
#pragma once

#include <string>
#include <vector>

#include "tables.h"

namespace sonivex_irgen {

/** Origin of the tables, which the source file names. */
struct TableOrigin {
    std::string sofa_sha256;
    double head_radius_m;
};

/** Source text with one array `k_` + name for each table, 16 values a line. It does not depend on the
 *  machine, the locale or the date. */
std::string tableSource(const std::vector<TableSet>& sets, const TableOrigin& origin);

}  // namespace sonivex_irgen
