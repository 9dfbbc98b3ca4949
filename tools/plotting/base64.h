#pragma once

#include <string>
#include <string_view>

namespace sonivex_plotting {

/** Returns bytes as text of the base 64 (RFC 4648, section 4), padded and without line breaks. */
std::string base64(std::string_view bytes);

}  // namespace sonivex_plotting
