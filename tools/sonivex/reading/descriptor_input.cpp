#include "descriptor_input.h"

#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "interrupt.h"

namespace sonivex_tool {
namespace {

constexpr int kBufferBytes = 64 * 1024;
constexpr int kPollPeriod_ms = 100;  // within which a waiting read sees a signal that another thread received

}  // namespace

DescriptorInput::DescriptorInput(int descriptor, Closing closing, const std::atomic<bool>& is_abandoned)
    : descriptor_(descriptor), closing_(closing), is_abandoned_(is_abandoned) {
    head_.reserve(kMostHeadBytes);  // libavformat calls readPacket, which therefore must not throw
    struct stat status {};
    const bool is_file = fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
    if (is_file) origin_ = lseek(descriptor, 0, SEEK_CUR);
    auto* buffer = static_cast<unsigned char*>(allocated(av_malloc(kBufferBytes)));
    io_ = avio_alloc_context(buffer, kBufferBytes, 0, this, readPacket, nullptr, is_file ? seek : nullptr);
    if (io_ == nullptr) av_free(buffer);
    allocated(io_);
}

DescriptorInput::~DescriptorInput() {
    av_freep(&io_->buffer);
    avio_context_free(&io_);
    if (closing_ == Closing::Close) (void)close(descriptor_);
}

void DescriptorInput::rewind() {
    (void)lseek(descriptor_, origin_, SEEK_SET);
}

int DescriptorInput::readPacket(void* opaque, uint8_t* buffer, int size) {
    DescriptorInput& input = *static_cast<DescriptorInput*>(opaque);
    while (true) {
        if (pendingSignal() != 0 || input.is_abandoned_) return AVERROR_EXIT;
        pollfd waiting = {input.descriptor_, POLLIN, 0};
        const int ready = poll(&waiting, 1, kPollPeriod_ms);
        if (ready == 0 || (ready < 0 && errno == EINTR)) continue;
        if (ready < 0) return AVERROR(errno);
        const ssize_t bytes = ::read(input.descriptor_, buffer, static_cast<size_t>(size));
        if (bytes > 0) {
            const size_t wanted = std::min(kMostHeadBytes - input.head_.size(), static_cast<size_t>(bytes));
            input.head_.append(reinterpret_cast<const char*>(buffer), wanted);
            return static_cast<int>(bytes);
        }
        if (bytes == 0) return AVERROR_EOF;
        if (errno != EINTR && errno != EAGAIN) return AVERROR(errno);
    }
}

int64_t DescriptorInput::seek(void* opaque, int64_t offset, int whence) {
    const DescriptorInput& input = *static_cast<DescriptorInput*>(opaque);
    if (whence == AVSEEK_SIZE) {
        struct stat status {};
        return fstat(input.descriptor_, &status) == 0 ? status.st_size - input.origin_ : AVERROR(errno);
    }
    const int way = whence & ~AVSEEK_FORCE;
    const off_t position = lseek(input.descriptor_, way == SEEK_SET ? offset + input.origin_ : offset, way);
    return position >= 0 ? position - input.origin_ : AVERROR(errno);
}

bool isStandardInput(const std::string& path) {
    return path == "-" || path == "pipe:" || path == "pipe:0";
}

}  // namespace sonivex_tool
