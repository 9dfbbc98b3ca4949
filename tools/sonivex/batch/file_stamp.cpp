#include "file_stamp.h"

#include <sys/stat.h>

namespace sonivex_tool {

std::optional<FileStamp> stampOf(const std::string& path) {
    constexpr int64_t kNanosecondsPerSecond = 1'000'000'000;
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
    return FileStamp{.size_bytes = status.st_size,
                     .mtime_ns = status.st_mtim.tv_sec * kNanosecondsPerSecond + status.st_mtim.tv_nsec};
}

}  // namespace sonivex_tool
