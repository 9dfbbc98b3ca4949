// Writes the 16-bit PCM that goes into and comes out of the effect to raw files, for tuning and fault
// finding. A session lasts from one flush to the next and has one file per effect and stage:
//   <directory>/sonivex_<effect>_<input|output>_<session id>.pcm
// Every block is on the disk before the next one is written, so that a dump survives a crash. A failure is
// logged and does not affect the frame.

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <exception>
#include <random>
#include <system_error>
#include <utility>

#include "SonivexFilter.h"
#include "vorlin/global_settings.h"
#include "vorlin/log.h"

namespace Vorlin {

namespace {

constexpr char kDirectoryProperty[] = "protected.network.cache.local.saveDir";
constexpr int kMaxRegenerations = 10;
constexpr int kClosed = -1;

// Owns a file descriptor until it is released.
class OwnedDescriptor {
  public:
    explicit OwnedDescriptor(int descriptor) : mDescriptor(descriptor) {}
    OwnedDescriptor(const OwnedDescriptor&) = delete;
    OwnedDescriptor& operator=(const OwnedDescriptor&) = delete;
    ~OwnedDescriptor() {
        if (mDescriptor != kClosed) ::close(mDescriptor);
    }
    int get() const { return mDescriptor; }
    int release() { return std::exchange(mDescriptor, kClosed); }

  private:
    int mDescriptor;
};

// Repeats a system call that a signal interrupted before it did anything.
template <typename Call>
auto retryInterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}

std::string textOf(int error) {
    return std::generic_category().message(error);  // thread-safe, unlike strerror
}

std::string fileNameOf(const std::string& effect, const char* stage, const std::string& session_id) {
    return "sonivex_" + effect + "_" + stage + "_" + session_id + ".pcm";
}

// The directory may be shared, and others may guess the name. The flags refuse a planted symbolic link, and a
// planted pipe without a reader instead of waiting for one. The file stays as it is until `emptyDumpFile` has
// checked it.
int openForDump(const std::string& path) {
    constexpr int kFlags = O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    constexpr mode_t kOwnerWritesAllRead = 0644;
    return retryInterrupted([&] { return ::open(path.c_str(), kFlags, kOwnerWritesAllRead); });
}

// Empties a regular file that has no other name. A pipe would end the process when its reader goes, and a
// file with another name may be somebody's data. The owner of the file does not matter, because some file
// systems report every file as another user's.
// @return 0, or an errno with the file left as it was.
int emptyDumpFile(int file) {
    struct stat status {};
    if (::fstat(file, &status) != 0) return errno;
    if (!S_ISREG(status.st_mode)) return EINVAL;
    if (status.st_nlink > 1) return EMLINK;
    return retryInterrupted([file] { return ::ftruncate(file, 0); }) == 0 ? 0 : errno;
}

}  // namespace

std::string sonivexFilter::getDumpDirectory() {
    std::string directory = globalSettings::GetInstance().getProperty(kDirectoryProperty);
    if (!directory.empty()) return directory;
    if (const char* home = std::getenv("HOME")) return std::string(home) + "/Documents";
    return "/tmp";
}

// Returns 8 random digits. @throws std::exception if the system has no source of randomness.
std::string sonivexFilter::generateSessionId() {
    std::random_device device;
    std::mt19937 generator(device());
    std::uniform_int_distribution<int> eight_digits(10'000'000, 99'999'999);
    return std::to_string(eight_digits(generator));
}

void sonivexFilter::dumpPCMData(const short* pcm, int channels, int samples, const std::string& effect,
                                bool is_input) {
    if (pcm == nullptr || effect.empty() || channels <= 0 || samples <= 0) return;
    try {
        const std::string directory = getDumpDirectory();
        if (mSessionId.empty()) startDumpSession(directory, effect);
        const char* stage = is_input ? "input" : "output";
        const std::string name = fileNameOf(effect, stage, mSessionId);
        if (mDumpFds.find(name) == mDumpFds.end()) {
            const std::string path = directory + "/" + name;
            if (!openDumpFile(name, path)) return;
            __log_print(
                LOG_INFO, kFilterName,
                "sonivex: dump file opened - path: %s, effect: %s, stage: %s, channels: %d, samples: %d",
                path.c_str(), effect.c_str(), stage, channels, samples);
        }
        writeToDump(name, pcm, channels, samples);
    } catch (const std::exception& error) {
        // There is no randomness or no memory. The dump misses this block, but the frame is not lost.
        __log_print(LOG_ERROR, kFilterName, "sonivex: dump skipped: %s", error.what());
    }
}

// Draws the ID again, up to kMaxRegenerations times, while an input file has it: the files of an earlier
// session, of this filter or another one, stay intact.
void sonivexFilter::startDumpSession(const std::string& directory, const std::string& effect) {
    std::string id = generateSessionId();
    for (int i = 0; i < kMaxRegenerations; ++i) {
        const std::string path = directory + "/" + fileNameOf(effect, "input", id);
        if (::access(path.c_str(), F_OK) != 0) break;
        __log_print(LOG_INFO, kFilterName, "sonivex: dump file %s already exists, regenerating session ID",
                    path.c_str());
        id = generateSessionId();
    }
    mSessionId = std::move(id);
    __log_print(LOG_INFO, kFilterName, "sonivex: using session ID: %s", mSessionId.c_str());
}

// @return whether the file is open; a failure is logged.
bool sonivexFilter::openDumpFile(const std::string& name, const std::string& path) {
    OwnedDescriptor file(openForDump(path));
    const int error = file.get() == kClosed ? errno : emptyDumpFile(file.get());
    if (error != 0) {
        __log_print(LOG_ERROR, kFilterName, "sonivex: failed to open dump file %s, errno=%d (%s)",
                    path.c_str(), error, textOf(error).c_str());
        return false;
    }
    mDumpTotals[name] = 0;
    mDumpPaths[name] = path;
    // mDumpFds comes last: a file that it holds is in all three maps, even if memory runs out here.
    mDumpFds[name] = file.get();
    (void)file.release();
    return true;
}

void sonivexFilter::writeToDump(const std::string& name, const short* pcm, int channels, int samples) {
    const int file = mDumpFds.at(name);
    if (file == kClosed) return;
    const std::size_t bytes =
        static_cast<std::size_t>(channels) * static_cast<std::size_t>(samples) * sizeof(short);
    const ssize_t written = retryInterrupted([&] { return ::write(file, pcm, bytes); });
    if (written < 0) {
        const int error = errno;
        __log_print(LOG_ERROR, kFilterName, "sonivex: write failed for %s, errno=%d (%s)", name.c_str(),
                    error, textOf(error).c_str());
        return;
    }
    if (static_cast<std::size_t>(written) < bytes) {
        // The disk is probably full. Only the next write reports a reason, so this line shows errno 0.
        __log_print(LOG_ERROR, kFilterName, "sonivex: write failed for %s, errno=%d (%s)", name.c_str(), 0,
                    "short write");
    }
    if (retryInterrupted([file] { return ::fsync(file); }) != 0) {
        const int error = errno;
        __log_print(LOG_WARNING, kFilterName, "sonivex: fsync failed for %s, errno=%d (%s)", name.c_str(),
                    error, textOf(error).c_str());
    }
    uint64_t& total = mDumpTotals.at(name);
    total += static_cast<uint64_t>(written);
    __log_print(LOG_INFO, kFilterName,
                "sonivex: dumped %zd bytes to %s (total: %llu bytes, channels: %d, samples: %d)", written,
                mDumpPaths.at(name).c_str(), static_cast<unsigned long long>(total), channels, samples);
}

// Closes every file and ends the session. The next block begins a new one.
void sonivexFilter::closeDumpFiles() {
    for (const auto& [name, file] : mDumpFds) {
        if (file == kClosed) continue;
        ::close(file);
        __log_print(LOG_INFO, kFilterName, "sonivex: closed dump file %s, total size: %llu bytes",
                    name.c_str(), static_cast<unsigned long long>(mDumpTotals.at(name)));
    }
    mDumpFds.clear();
    mDumpTotals.clear();
    mDumpPaths.clear();
    mSessionId.clear();
}

}  // namespace Vorlin
