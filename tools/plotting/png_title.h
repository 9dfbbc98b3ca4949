#pragma once

#include <string>

namespace sonivex_plotting {

/** Returns a PNG file with a title: a text chunk "Title" behind the header (ISO/IEC 15948, 11.3.4.3).
 *  @param png a whole PNG file
 *  @param title in ASCII */
std::string withPngTitle(const std::string& png, const std::string& title);

}  // namespace sonivex_plotting
