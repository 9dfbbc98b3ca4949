#include "media_file.h"

extern "C" {
#include <libavutil/opt.h>
}

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <filesystem>
#include <new>
#include <string_view>
#include <system_error>

#include "failure.h"
#include "interrupt.h"
#include "wav_end.h"

namespace sonivex_tool {
namespace {

// A demuxer that still finds no packet after so many errors in a row has nothing to go on with. Each of them
// has skipped at least one broken element, or will fail in the same way for ever.
constexpr int kMostErrorsInARow = 1000;

// A playlist or a session description is a file that names others. That of a named file may name files beside
// it. Whoever writes to a pipe may not choose what is read from the disk. Nobody may choose an address in the
// network.
constexpr const char* kProtocolsForFiles = "file,pipe,fd,crypto,data";
constexpr const char* kProtocolsForPipes = "none";

int stopReading(void* is_abandoned) {
    return pendingSignal() != 0 || *static_cast<std::atomic<bool>*>(is_abandoned) ? 1 : 0;
}

[[noreturn]] void failToOpen(const std::string& path, const std::string& reason) {
    throw Failure(ExitCode::InputNotReadable, "cannot open \"" + path + "\": " + reason);
}

// Prefixes the path of an existing file with "file:", because libavformat would otherwise treat a colon in
// its name as the end of a protocol. Rejects a folder and an address.
std::string asUrl(const std::string& path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    if (std::filesystem::is_directory(status)) failToOpen(path, "it is a folder");
    if (std::filesystem::exists(status)) return "file:" + path;
    if (path.find("://") != std::string::npos)
        failToOpen(path, "it is an address, and only files can be read");
    return path;
}

// Returns the name of the format that a file seems to have, or nothing.
std::string formatOf(const std::string& url) {
    AVIOContext* io = nullptr;
    if (avio_open(&io, url.c_str(), AVIO_FLAG_READ) < 0) return {};
    const AVInputFormat* format = nullptr;
    const int score = av_probe_input_buffer2(io, &format, nullptr, nullptr, 0, 0);
    avio_closep(&io);
    return score > AVPROBE_SCORE_RETRY && format != nullptr ? format->long_name : std::string();
}

// Returns the first bytes of a file, fewer or none if it cannot be read.
std::string headOf(const std::string& url) {
    std::string head(DescriptorInput::kMostHeadBytes, '\0');
    AVIOContext* io = nullptr;
    if (avio_open(&io, url.c_str(), AVIO_FLAG_READ) < 0) return {};
    const int bytes =
        avio_read(io, reinterpret_cast<unsigned char*>(head.data()), static_cast<int>(head.size()));
    avio_closep(&io);
    head.resize(static_cast<size_t>(std::max(bytes, 0)));
    return head;
}

// main() keeps a closed standard input closed for reading: it is open for writing only.
bool isReadable(int descriptor) {
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && (flags & O_ACCMODE) != O_WRONLY;
}

}  // namespace

MediaFile::MediaFile(const std::string& path) {
    try {
        open(path);
    } catch (...) {
        avformat_close_input(&container_);
        throw;
    }
    messages_.emplace(container_);
}

MediaFile::~MediaFile() {
    messages_.reset();
    avformat_close_input(&container_);
}

void MediaFile::openDescriptor(const std::string& path) {
    std::error_code error;
    if (isStandardInput(path)) {
        if (!isReadable(STDIN_FILENO)) failToOpen(path, "standard input is closed");
        descriptor_ =
            std::make_unique<DescriptorInput>(STDIN_FILENO, DescriptorInput::Closing::Leave, is_abandoned_);
    } else if (std::filesystem::is_fifo(path, error)) {
        // Without O_NONBLOCK, opening would wait for a writer, and no signal to another thread would end it.
        const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        if (descriptor < 0) failToOpen(path, std::generic_category().message(errno));
        descriptor_ =
            std::make_unique<DescriptorInput>(descriptor, DescriptorInput::Closing::Close, is_abandoned_);
    }
}

void MediaFile::open(const std::string& path) {
    openDescriptor(path);
    // A pipe has a name, too: demuxers of playlists would report a missing one as missing memory.
    const std::string url = descriptor_ != nullptr ? "pipe:" : asUrl(path);
    container_ = allocated(avformat_alloc_context());
    container_->interrupt_callback = {stopReading, &is_abandoned_};
    if (descriptor_ != nullptr) container_->pb = descriptor_->io();
    const char* const protocols = descriptor_ != nullptr ? kProtocolsForPipes : kProtocolsForFiles;
    if (av_opt_set(container_, "protocol_whitelist", protocols, 0) < 0) throw std::bad_alloc();
    int result = avformat_open_input(&container_, url.c_str(), nullptr, nullptr);
    if (result >= 0) {
        is_of_unknown_length_ = isOfUnknownLength(url);
        // The demuxer of WAV would take a placeholder for the end. That of CAF has no options.
        if (is_of_unknown_length_ && container_->iformat->priv_class != nullptr)
            (void)av_opt_set_int(container_->priv_data, "ignore_length", 1, 0);
        result = avformat_find_stream_info(container_, nullptr);
    }
    throwIfInterrupted();
    if (result == AVERROR_INVALIDDATA) {
        const std::string format = descriptor_ == nullptr ? formatOf(url) : std::string();
        failToOpen(path, format.empty()
                             ? "unknown file format"
                             : "it is damaged or cut off: " + format + " without a readable header");
    }
    if (result == AVERROR_EOF) failToOpen(path, "it is empty or ends too early");
    if (result < 0) failToOpen(path, inputErrorText(result));
    if (is_of_unknown_length_) forgetStatedLength();
}

// A placeholder is no length. One that follows from the size of the file may stay.
void MediaFile::forgetStatedLength() {
    if (container_->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE) return;
    container_->duration = AV_NOPTS_VALUE;
    for (unsigned i = 0; i < container_->nb_streams; ++i) container_->streams[i]->duration = AV_NOPTS_VALUE;
}

bool MediaFile::isOfUnknownLength(const std::string& url) const {
    const std::string_view format = container_->iformat->name;
    // The demuxer of CAF counts the frames of a stated length.
    if (format == "caf") return container_->nb_streams > 0 && container_->streams[0]->nb_frames == 0;
    if (format != "wav") return false;
    return isWavOfUnknownLength(descriptor_ != nullptr ? descriptor_->head() : headOf(url));
}

// The demuxers of WAV and CAF read blocks of one length. They mark a shorter one as corrupt, which at the end
// of a file of unknown length is only what is left, unless it ends within a frame.
bool MediaFile::isWholeEnd(const AVPacket& packet) const {
    const int frame_bytes = container_->streams[packet.stream_index]->codecpar->block_align;
    return is_of_unknown_length_ && frame_bytes > 0 && packet.size % frame_bytes == 0;
}

bool MediaFile::read(AVPacket& packet) {
    av_packet_unref(&packet);
    for (int errors_in_row = 0; errors_in_row < kMostErrorsInARow; ++errors_in_row) {
        throwIfInterrupted();
        const uint64_t messages_before = messages_->count();
        const int result = av_read_frame(container_, &packet);
        throwIfInterrupted();
        if (is_abandoned_) return false;
        if (result >= 0) {
            if ((packet.flags & AV_PKT_FLAG_CORRUPT) == 0) return true;
            if (!isWholeEnd(packet)) {
                ++faults_.corrupt_packets;
            } else if (messages_->count() > messages_before) {
                ++excused_messages_;  // "Packet corrupt", unless the packet was read ahead
            }
            return true;
        }
        if (result == AVERROR_EOF) {
            // The demuxers report a failed read of the file itself as its end.
            const AVIOContext* io = container_->pb;
            if (io != nullptr && io->error < 0 && io->error != AVERROR_EOF) ++faults_.errors;
            return false;
        }
        if (errors_in_row == 0) ++faults_.errors;
    }
    faults_.is_given_up = true;
    return false;
}

bool MediaFile::seek(int stream, double seconds) {
    const AVRational unit = container_->streams[stream]->time_base;
    const auto target = static_cast<int64_t>(std::floor(seconds / av_q2d(unit)));
    const int result = av_seek_frame(container_, stream, target, AVSEEK_FLAG_BACKWARD);
    throwIfInterrupted();
    return result >= 0;
}

bool MediaFile::canRestart() const {
    const AVIOContext* io = container_->pb;
    return io != nullptr && (io->seekable & AVIO_SEEKABLE_NORMAL) != 0;
}

void MediaFile::rewind() {
    if (descriptor_ != nullptr) descriptor_->rewind();
}

ReadFaults MediaFile::faults() const {
    ReadFaults faults = faults_;
    faults.messages = messages_->count() - excused_messages_;
    return faults;
}

}  // namespace sonivex_tool
