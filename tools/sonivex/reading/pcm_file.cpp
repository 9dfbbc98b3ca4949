#include "pcm_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>

#include "failure.h"
#include "interrupt.h"

namespace sonivex_tool {
namespace {

constexpr int kFramesPerRead = 4096;

[[noreturn]] void failToRead(const std::string& path, const std::string& reason) {
    throw Failure(ExitCode::InputNotReadable, "cannot read \"" + path + "\": " + reason);
}

}  // namespace

PcmFile::PcmFile(const std::string& path, const PcmFormat& format) : path_(path) {
    spec_.format = AV_SAMPLE_FMT_S16;
    spec_.rate_hz = format.rate_hz;
    spec_.layout = defaultLayout(format.channels);

    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (std::filesystem::is_directory(status)) failToRead(path, "it is a folder");
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        failToRead(path, "it is not a regular file");
    do {
        descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    } while (descriptor_ < 0 && errno == EINTR && pendingSignal() == 0);
    throwIfInterrupted();
    if (descriptor_ < 0) failToRead(path, std::strerror(errno));
    try {
        checkSize(format);
    } catch (...) {
        (void)::close(descriptor_);
        throw;
    }
}

PcmFile::~PcmFile() {
    (void)::close(descriptor_);
}

void PcmFile::checkSize(const PcmFormat& format) {
    struct stat status {};
    if (::fstat(descriptor_, &status) != 0) failToRead(path_, std::strerror(errno));
    const auto bytes = static_cast<std::uintmax_t>(status.st_size);
    const std::uintmax_t frame_bytes = static_cast<std::uintmax_t>(format.channels) * sizeof(int16_t);
    if (bytes == 0) throw Failure(ExitCode::NoAudio, "cannot read \"" + path_ + "\": it is empty");
    rest_bytes_ = static_cast<int>(bytes % frame_bytes);
    if (rest_bytes_ == 0 || (format.broken_end == BrokenEnd::CutOff && bytes > frame_bytes)) return;
    throw Failure(
        ExitCode::NoAudio,
        "cannot read \"" + path_ + "\": its " + std::to_string(bytes) + " bytes are not a whole number of " +
            std::to_string(frame_bytes) + "-byte frames (" + std::to_string(format.channels) +
            (format.channels == 1 ? " channel" : " channels") + " of 16 bits)" +
            (format.broken_end == BrokenEnd::WrongAssumption ? "; --channels sets the channel count" : ""));
}

// An interrupted read goes on: signals that end the program leave their mark, and others, such as the end of
// a suspension, mean nothing here.
std::size_t PcmFile::readBytes(unsigned char* bytes, std::size_t wanted) {
    std::size_t done = 0;
    while (done < wanted) {
        const ssize_t count = ::read(descriptor_, bytes + done, wanted - done);
        if (count == 0) break;
        if (count < 0 && errno != EINTR) failToRead(path_, std::strerror(errno));
        if (count < 0) {
            throwIfInterrupted();
            continue;
        }
        done += static_cast<std::size_t>(count);
    }
    return done;
}

FramePtr PcmFile::read() {
    const std::size_t frame_bytes = static_cast<std::size_t>(spec_.channels()) * sizeof(int16_t);
    FramePtr frame = makeFrame(spec_, kFramesPerRead);
    const std::size_t frames = readBytes(frame->data[0], kFramesPerRead * frame_bytes) / frame_bytes;
    if (frames == 0) return nullptr;
    frame->nb_samples = static_cast<int>(frames);
    return frame;
}

}  // namespace sonivex_tool
