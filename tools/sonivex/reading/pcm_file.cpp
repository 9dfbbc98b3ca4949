#include "pcm_file.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <filesystem>

#include "failure.h"

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
    file_.reset(std::fopen(path.c_str(), "rbe"));
    if (file_ == nullptr) failToRead(path, std::strerror(errno));

    const std::uintmax_t bytes = std::filesystem::file_size(path, error);
    if (error) failToRead(path, error.message());
    const std::uintmax_t frame_bytes = static_cast<std::uintmax_t>(format.channels) * sizeof(int16_t);
    if (bytes == 0) throw Failure(ExitCode::NoAudio, "cannot read \"" + path + "\": it is empty");
    rest_bytes_ = static_cast<int>(bytes % frame_bytes);
    if (rest_bytes_ == 0 || (format.broken_end == BrokenEnd::CutOff && bytes > frame_bytes)) return;
    throw Failure(
        ExitCode::NoAudio,
        "cannot read \"" + path + "\": its " + std::to_string(bytes) + " bytes are not a whole number of " +
            std::to_string(frame_bytes) + "-byte frames (" + std::to_string(format.channels) +
            (format.channels == 1 ? " channel" : " channels") + " of 16 bits)" +
            (format.broken_end == BrokenEnd::WrongAssumption ? "; --channels sets the channel count" : ""));
}

FramePtr PcmFile::read() {
    const auto channels = static_cast<std::size_t>(spec_.channels());
    FramePtr frame = makeFrame(spec_, kFramesPerRead);
    const std::size_t frames =
        std::fread(frame->data[0], channels * sizeof(int16_t), kFramesPerRead, file_.get());
    if (std::ferror(file_.get()) != 0) failToRead(path_, std::strerror(errno));
    if (frames == 0) return nullptr;
    frame->nb_samples = static_cast<int>(frames);
    return frame;
}

}  // namespace sonivex_tool
