#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <optional>
#include <random>

#include "failure.h"
#include "interrupt.h"

namespace sonivex_tool {
namespace {

constexpr int kMaxLinks = 40;  // the limit of the Linux kernel
constexpr int kMaxNameAttempts = 100;
constexpr mode_t kNewFileMode = 0666;  // before the umask

// The path that a write to `path` would create or change. Links are followed even if their target does not
// exist yet.
std::filesystem::path followLinks(std::filesystem::path path) {
    for (int i = 0; i < kMaxLinks; ++i) {
        std::error_code error;
        const auto target = std::filesystem::read_symlink(path, error);
        if (error) break;
        path = target.is_absolute() ? target : path.parent_path() / target;
    }
    return path;
}

std::optional<struct stat> statOf(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) return std::nullopt;
    return status;
}

std::string randomSuffix() {
    constexpr char kLetters[] = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device random;
    std::string suffix;
    for (int i = 0; i < 8; ++i) suffix += kLetters[random() % (sizeof kLetters - 1)];
    return suffix;
}

Failure alreadyThere(const std::string& name) {
    return {ExitCode::OutputExists, "cannot write \"" + name + "\": it already exists (--force replaces it)"};
}

}  // namespace

void OutputFile::check(const std::string& path, bool replace) {
    const auto status = statOf(path);
    if (!status) return;
    if (S_ISDIR(status->st_mode))
        throw Failure(ExitCode::OutputExists, "cannot write \"" + path + "\": it is a folder");
    if (!S_ISREG(status->st_mode))
        throw Failure(ExitCode::OutputExists, "cannot write \"" + path + "\": it is not a regular file");
    if (!replace) throw alreadyThere(path);
}

OutputFile::OutputFile(const std::string& path, bool replace)
    : Output("\"" + path + "\""), path_(path), destination_(followLinks(path).string()), replace_(replace) {
    check(path, replace);
    createTemporary();
    try {
        openIo(seek);
    } catch (...) {
        close();
        throw;
    }
}

OutputFile::~OutputFile() {
    close();
}

void OutputFile::createTemporary() {
    const std::filesystem::path destination(destination_);
    for (int i = 0; i < kMaxNameAttempts; ++i) {
        const auto candidate = destination.parent_path() / (".sonivex-" + randomSuffix() + ".part");
        removeOnSecondSignal(candidate.c_str());  // before the file exists: a signal may come in between
        descriptor_ = ::open(candidate.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kNewFileMode);
        if (descriptor_ >= 0) {
            temporary_ = candidate.string();
            break;
        }
        const int error_number = errno;
        removeOnSecondSignal(nullptr);
        if (error_number != EEXIST) fail(error_number);
    }
    if (descriptor_ < 0) fail(EEXIST);
    // The new file takes over the mode of the file that it replaces. If that fails, the umask's mode remains.
    if (const auto old = statOf(destination_)) (void)!::fchmod(descriptor_, old->st_mode & 07777U);
}

int OutputFile::writeAll(const uint8_t* data, size_t bytes) {
    size_t written = 0;
    while (written < bytes) {
        const ssize_t count = ::write(descriptor_, data + written, bytes - written);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return remember(errno);
        if (count == 0) return remember(EIO);  // the destination takes nothing and gives no reason
        written += static_cast<size_t>(count);
    }
    return static_cast<int>(bytes);
}

int64_t OutputFile::seek(void* output, int64_t offset, int whence) {
    auto& file = *static_cast<OutputFile*>(static_cast<Output*>(output));
    if (whence == AVSEEK_SIZE) {
        struct stat status {};
        return ::fstat(file.descriptor_, &status) == 0 ? status.st_size : AVERROR(errno);
    }
    const off_t position = ::lseek(file.descriptor_, offset, whence & ~AVSEEK_FORCE);
    return position >= 0 ? position : file.remember(errno);
}

void OutputFile::commit() {
    avio_flush(io());
    throwIfFailed();
    // Without fsync, a crash of the machine soon after the rename could leave a file without its contents.
    int result = 0;
    do {
        result = ::fsync(descriptor_);
    } while (result != 0 && errno == EINTR);
    if (result != 0 && errno != EINVAL) fail(errno);  // EINVAL: not supported by this file system
    const int descriptor = descriptor_;
    descriptor_ = -1;
    // Network file systems may report a full disk only on close.
    if (::close(descriptor) != 0 && errno != EINTR) fail(errno);
    giveName();
    removeOnSecondSignal(nullptr);
    temporary_.clear();
}

void OutputFile::giveName() {
    const char* from = temporary_.c_str();
    const char* to = destination_.c_str();
    if (replace_) {
        if (::rename(from, to) != 0) fail(errno);
        return;
    }
    if (::renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return;
    if (errno == EEXIST) throw alreadyThere(path_);
    if (errno != EINVAL && errno != ENOSYS) fail(errno);
    // Not every file system supports RENAME_NOREPLACE. Creating a hard link does not replace a file either,
    // but not every file system supports links.
    if (::link(from, to) == 0) {
        ::unlink(from);
        return;
    }
    if (errno == EEXIST) throw alreadyThere(path_);
    check(path_, replace_);
    if (::rename(from, to) != 0) fail(errno);
}

void OutputFile::close() {
    closeIo();
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
    if (temporary_.empty()) return;
    ::unlink(temporary_.c_str());
    removeOnSecondSignal(nullptr);
    temporary_.clear();
}

}  // namespace sonivex_tool
