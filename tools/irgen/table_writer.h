/* The C++ source that holds the tables. */
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

#include "tables.h"

namespace sonivex_irgen {

/** The source cannot be written; the text is file and reason. */
class UnwritableOutput : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/** Where the tables come from. */
struct TableOrigin {
    std::string sofaSha256;
    double headRadius_m;
};

/** Source text: one array `k_` + name for each table, 16 values a line. The same on every machine and day. */
std::string tableSource(const std::vector<TableSet>& sets, const TableOrigin& origin);

/** Write a file as a whole or not at all: to a temporary name beside it, then renamed. Throws
 * UnwritableOutput. */
void replaceFile(const std::string& path, const std::string& text);

}  // namespace sonivex_irgen
