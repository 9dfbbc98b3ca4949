// A library for LD_PRELOAD that makes one kind of system call fail in a program that knows nothing of it.
// Only calls on files below one folder count, and starts of threads. The environment says what fails:
//
//   SONIVEX_FAIL_CALL    open, folder (its creation), read, write, sync, close (of a file for reading only),
//                        close-written, rename, thread or none
//   SONIVEX_FAIL_FIRST   number of the first call that fails, counted from 1
//   SONIVEX_FAIL_MANNER  once, or always: all calls from the first on
//   SONIVEX_FAIL_RESULT  an errno; "short": a write or a read moves one byte only; "full": the write moves
//                        half of its bytes, and all writes after it fail with ENOSPC
//   SONIVEX_FAIL_FOLDER  an absolute path
//   SONIVEX_FAIL_MARK    a file to create when a call has failed
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#define FOR_PROGRAMS extern "C" __attribute__((visibility("default")))

namespace {

const char* setting(const char* name) {
    const char* value = std::getenv(name);
    return value != nullptr ? value : "";
}

bool isBelowFolder(const char* path) {
    static const char* const folder = setting("SONIVEX_FAIL_FOLDER");
    const std::size_t length = std::strlen(folder);
    return length > 0 && path != nullptr && std::strncmp(path, folder, length) == 0 && path[length] == '/';
}

bool isBelowFolder(int descriptor) {
    char name[64];
    char path[4096];
    std::snprintf(name, sizeof name, "/proc/self/fd/%d", descriptor);
    const ssize_t length = readlink(name, path, sizeof path - 1);
    if (length <= 0) return false;
    path[length] = '\0';
    return isBelowFolder(path);
}

template <typename Function>
Function nextOf(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

bool isWritable(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_RDONLY;
}

enum class Fate { kSucceeds, kFails, kIsShort, kIsHalf };

void leaveMark() {
    static const auto real = nextOf<int (*)(const char*, int, ...)>("open64");
    static const auto real_close = nextOf<int (*)(int)>("close");
    const int mark = real(setting("SONIVEX_FAIL_MARK"), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    if (mark >= 0) real_close(mark);
}

// Counts a call of this kind. If it is to fail, sets errno.
Fate fateOf(const char* call) {
    static const char* const failing_call = setting("SONIVEX_FAIL_CALL");
    static const long first = std::strtol(setting("SONIVEX_FAIL_FIRST"), nullptr, 10);
    static const bool fails_always = std::strcmp(setting("SONIVEX_FAIL_MANNER"), "always") == 0;
    static const char* const result = setting("SONIVEX_FAIL_RESULT");
    static const bool fills_disk = std::strcmp(result, "full") == 0;
    static std::atomic<long> calls{0};
    if (std::strcmp(call, failing_call) != 0) return Fate::kSucceeds;
    const long number = ++calls;
    if (number < first || (number > first && !fails_always && !fills_disk)) return Fate::kSucceeds;
    leaveMark();
    if (std::strcmp(result, "short") == 0) return Fate::kIsShort;
    if (fills_disk && number == first) return Fate::kIsHalf;
    if (fills_disk) {
        errno = ENOSPC;
        return Fate::kFails;
    }
    errno = static_cast<int>(std::strtol(result, nullptr, 10));
    return Fate::kFails;
}

template <typename Where>
Fate fateOf(const char* call, Where where) {
    return isBelowFolder(where) ? fateOf(call) : Fate::kSucceeds;
}

}  // namespace

// Only a call that may create a file has a mode.
#define READ_MODE(mode, flags)                                        \
    mode_t mode = 0;                                                  \
    if ((flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE) { \
        va_list arguments;                                            \
        va_start(arguments, flags);                                   \
        mode = va_arg(arguments, mode_t);                             \
        va_end(arguments);                                            \
    }

#define OPEN_LIKE(name)                                                                \
    FOR_PROGRAMS int name(const char* path, int flags, ...) {                          \
        static const auto real = nextOf<int (*)(const char*, int, ...)>(#name);        \
        READ_MODE(mode, flags)                                                         \
        return fateOf("open", path) == Fate::kSucceeds ? real(path, flags, mode) : -1; \
    }
OPEN_LIKE(open)
OPEN_LIKE(open64)

#define OPEN_AT_LIKE(name)                                                                      \
    FOR_PROGRAMS int name(int folder, const char* path, int flags, ...) {                       \
        static const auto real = nextOf<int (*)(int, const char*, int, ...)>(#name);            \
        READ_MODE(mode, flags)                                                                  \
        const bool is_below =                                                                   \
            path[0] == '/' || folder == AT_FDCWD ? isBelowFolder(path) : isBelowFolder(folder); \
        const Fate fate = is_below ? fateOf("open") : Fate::kSucceeds;                          \
        return fate == Fate::kSucceeds ? real(folder, path, flags, mode) : -1;                  \
    }
OPEN_AT_LIKE(openat)
OPEN_AT_LIKE(openat64)

FOR_PROGRAMS int mkdir(const char* path, mode_t mode) {
    static const auto real = nextOf<int (*)(const char*, mode_t)>("mkdir");
    return fateOf("folder", path) == Fate::kSucceeds ? real(path, mode) : -1;
}

#define FOPEN_LIKE(name)                                                             \
    FOR_PROGRAMS FILE* name(const char* path, const char* mode) {                    \
        static const auto real = nextOf<FILE* (*)(const char*, const char*)>(#name); \
        return fateOf("open", path) == Fate::kSucceeds ? real(path, mode) : nullptr; \
    }
FOPEN_LIKE(fopen)
FOPEN_LIKE(fopen64)

FOR_PROGRAMS ssize_t read(int file, void* data, size_t bytes) {
    static const auto real = nextOf<ssize_t (*)(int, void*, size_t)>("read");
    const Fate fate = fateOf("read", file);
    if (fate == Fate::kFails) return -1;
    return real(file, data, fate == Fate::kIsShort && bytes > 1 ? 1 : bytes);
}

FOR_PROGRAMS size_t fread(void* data, size_t size, size_t count, FILE* stream) {
    static const auto real = nextOf<size_t (*)(void*, size_t, size_t, FILE*)>("fread");
    if (fateOf("read", fileno(stream)) != Fate::kFails) return real(data, size, count, stream);
    constexpr int kHasFailed = 0x20;  // of the C library's streams
    stream->_flags |= kHasFailed;
    return 0;
}

FOR_PROGRAMS ssize_t pread(int file, void* data, size_t bytes, off_t offset) {
    static const auto real = nextOf<ssize_t (*)(int, void*, size_t, off_t)>("pread");
    const Fate fate = fateOf("read", file);
    if (fate == Fate::kFails) return -1;
    return real(file, data, fate == Fate::kIsShort && bytes > 1 ? 1 : bytes, offset);
}

FOR_PROGRAMS ssize_t write(int file, const void* data, size_t bytes) {
    static const auto real = nextOf<ssize_t (*)(int, const void*, size_t)>("write");
    const Fate fate = fateOf("write", file);
    if (fate == Fate::kFails) return -1;
    if (fate == Fate::kIsShort && bytes > 1) return real(file, data, 1);
    if (fate == Fate::kIsHalf && bytes > 1) return real(file, data, bytes / 2);
    return real(file, data, bytes);
}

// A short write ends with the first piece.
FOR_PROGRAMS ssize_t writev(int file, const iovec* pieces, int count) {
    static const auto real = nextOf<ssize_t (*)(int, const iovec*, int)>("writev");
    const Fate fate = fateOf("write", file);
    if (fate == Fate::kFails) return -1;
    return real(file, pieces, fate == Fate::kSucceeds || count < 1 ? count : 1);
}

FOR_PROGRAMS int fsync(int file) {
    static const auto real = nextOf<int (*)(int)>("fsync");
    return fateOf("sync", file) == Fate::kSucceeds ? real(file) : -1;
}

FOR_PROGRAMS int fdatasync(int file) {
    static const auto real = nextOf<int (*)(int)>("fdatasync");
    return fateOf("sync", file) == Fate::kSucceeds ? real(file) : -1;
}

// The descriptor is gone even if the call fails, as on Linux.
FOR_PROGRAMS int close(int file) {
    static const auto real = nextOf<int (*)(int)>("close");
    const Fate fate = fateOf(isWritable(file) ? "close-written" : "close", file);
    const int error = errno;
    const int result = real(file);
    if (fate == Fate::kSucceeds) return result;
    errno = error;
    return -1;
}

FOR_PROGRAMS int rename(const char* from, const char* to) {
    static const auto real = nextOf<int (*)(const char*, const char*)>("rename");
    return fateOf("rename", from) == Fate::kSucceeds ? real(from, to) : -1;
}

FOR_PROGRAMS int renameat2(int from_folder, const char* from, int to_folder, const char* to, unsigned flags) {
    static const auto real = nextOf<int (*)(int, const char*, int, const char*, unsigned)>("renameat2");
    return fateOf("rename", from) == Fate::kSucceeds ? real(from_folder, from, to_folder, to, flags) : -1;
}

FOR_PROGRAMS int link(const char* from, const char* to) {
    static const auto real = nextOf<int (*)(const char*, const char*)>("link");
    return fateOf("rename", from) == Fate::kSucceeds ? real(from, to) : -1;
}

FOR_PROGRAMS int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                                void* argument) {
    static const auto real =
        nextOf<int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*)>("pthread_create");
    return fateOf("thread") == Fate::kSucceeds ? real(thread, attributes, body, argument) : errno;
}
