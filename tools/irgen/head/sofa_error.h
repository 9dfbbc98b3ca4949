// Words for the errors of libmysofa.
#pragma once

#include <string>

namespace sonivex_irgen {

/** Returns text for an error of libmysofa, without a full stop. The library's own codes start at 10000;
 *  smaller positive ones are the system's errno values. */
std::string sofaErrorText(int error);

}  // namespace sonivex_irgen
