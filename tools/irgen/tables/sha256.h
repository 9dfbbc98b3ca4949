// SHA-256 (FIPS 180-4). It identifies the SOFA file that the tables were made from.
#pragma once

#include <string>
#include <string_view>

namespace sonivex_irgen {

/** Digest of some bytes as 64 lower-case hexadecimal digits. */
std::string sha256(std::string_view bytes);

}  // namespace sonivex_irgen
