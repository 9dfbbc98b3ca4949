#pragma once

#include <string_view>

namespace sonivex_tool {

/** The files of the folder page/, which CMake embeds. The template's words between two @ are replaced. */
extern const std::string_view kPageTemplate;
extern const std::string_view kPageStyle;
extern const std::string_view kPageScript;

}  // namespace sonivex_tool
