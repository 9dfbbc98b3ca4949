#include "absolute_path.h"

#include <system_error>

namespace sonivex_tool {

std::filesystem::path absolutePath(const std::filesystem::path& path) {
    std::error_code error;
    std::filesystem::path absolute = std::filesystem::absolute(path, error);
    return error ? path : absolute;
}

}  // namespace sonivex_tool
