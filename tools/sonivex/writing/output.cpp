#include "output.h"

#include <cerrno>
#include <cstring>

#include "container_choice.h"
#include "failure.h"
#include "interrupt.h"
#include "output_file.h"
#include "output_pipe.h"
#include "result_stream.h"
#include "write_errors.h"

namespace sonivex_tool {
namespace {

constexpr int kBufferBytes = 1 << 16;

}  // namespace

Output::~Output() {
    closeIo();
}

void Output::openIo(SeekCallback seek) {
    auto* buffer = static_cast<unsigned char*>(allocated(av_malloc(kBufferBytes)));
    const auto write = [](void* self, auto* data, int bytes) {
        return static_cast<Output*>(self)->writeAll(data, static_cast<size_t>(bytes));
    };
    io_ = avio_alloc_context(buffer, kBufferBytes, 1, this, nullptr, write, seek);
    if (io_ != nullptr) return;
    av_free(buffer);
    throw std::bad_alloc();
}

void Output::closeIo() {
    if (io_ == nullptr) return;
    av_freep(&io_->buffer);
    avio_context_free(&io_);
}

int Output::remember(int error_number) {
    if (error_number_ == 0) error_number_ = error_number;
    return AVERROR(error_number);
}

void Output::throwIfFailed() const {
    if (error_number_ == EINTR) throwIfInterrupted();
    if (error_number_ != 0) fail(error_number_);
}

void Output::fail(int error_number) const {
    throw Failure(exitCodeOfWriteError(error_number),
                  "cannot write " + name_ + ": " + std::strerror(error_number));
}

void checkOutput(const OutputSettings& settings) {
    if (!goesToStandardOutput(settings)) OutputFile::check(settings.path, settings.replace);
}

std::unique_ptr<Output> openOutput(const OutputSettings& settings) {
    if (goesToStandardOutput(settings)) return std::make_unique<OutputPipe>(originalStandardOutput());
    return std::make_unique<OutputFile>(settings.path, settings.replace);
}

}  // namespace sonivex_tool
