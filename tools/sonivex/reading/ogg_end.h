#pragma once

#include <string>

namespace sonivex_tool {

/** Returns true if a file is an Ogg file that ends within a page: it is cut off, which libavformat does not
 * tell. Returns false for all other files, and for what is not a file. */
bool endsWithinOggPage(const std::string& path);

}  // namespace sonivex_tool
