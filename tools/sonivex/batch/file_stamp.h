#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace sonivex_tool {

/** The size of a file and the time of its last change: enough to notice that it is no longer the same. */
struct FileStamp {
    int64_t size_bytes = 0;
    int64_t mtime_ns = 0;  // since 1970

    bool operator==(const FileStamp&) const = default;
};

/** Returns the stamp of a regular file, or nothing for anything else. Links are followed. */
std::optional<FileStamp> stampOf(const std::string& path);

}  // namespace sonivex_tool
