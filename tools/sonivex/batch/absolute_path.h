#pragma once

#include <filesystem>

namespace sonivex_tool {

/** Returns the path from the root. If the system does not tell the working directory, which somebody may have
 *  removed, a relative path stays relative. */
std::filesystem::path absolutePath(const std::filesystem::path& path);

}  // namespace sonivex_tool
