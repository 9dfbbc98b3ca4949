#include "replacement_file.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace sonivex_irgen {

ReplacementFile::ReplacementFile(std::string path)
    : path_(std::move(path)), temporary_(path_ + ".part" + std::to_string(getpid())) {
    // A rename would take a device out of the file system, and would replace a link instead of its file.
    std::error_code ignored;
    const std::filesystem::file_status status = std::filesystem::symlink_status(path_, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw UnwritableOutput(path_ + ": not a regular file");
    }
    errno = 0;
    file_.open(temporary_, std::ios::binary | std::ios::trunc);
    if (!file_) fail();
}

ReplacementFile::~ReplacementFile() {
    if (!is_committed_) static_cast<void>(std::remove(temporary_.c_str()));
}

void ReplacementFile::commit(const std::string& text) {
    errno = 0;
    file_ << text;
    file_.close();
    if (!file_ || std::rename(temporary_.c_str(), path_.c_str()) != 0) fail();
    is_committed_ = true;
}

void ReplacementFile::fail() const {
    throw UnwritableOutput(path_ + ": cannot write: " + (errno != 0 ? std::strerror(errno) : "write error"));
}

}  // namespace sonivex_irgen
