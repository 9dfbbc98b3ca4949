#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "av_objects.h"
#include "output_settings.h"

namespace sonivex_tool {

/** A destination of encoded data: a file or standard output. */
class Output {
  public:
    virtual ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    /** The I/O context for a muxer; owned by this object. Its callbacks record errors for `throwIfFailed`. */
    AVIOContext* io() { return io_; }

    /** Throws if a write or seek has failed; reports the first such error.
     * @throw Failure (OutputNotWritable, NoSpace, or the exit code of a pending signal) */
    void throwIfFailed() const;

    /** Writes the buffered data through and completes the output. Call it once.
     * @throw Failure as `throwIfFailed`, and OutputExists */
    virtual void commit() = 0;

  protected:
    /** @param name of the destination for messages: a quoted path, or "standard output" */
    explicit Output(std::string name) : name_(std::move(name)) {}

    /** Works as the seek callback of an AVIOContext, of which `output` is the Output. */
    using SeekCallback = int64_t (*)(void* output, int64_t offset, int whence);

    /** Creates the I/O context.
     * @param seek null if the output cannot be sought
     * @throw std::bad_alloc */
    void openIo(SeekCallback seek);
    void closeIo();

    /** Writes all bytes. @return `bytes`, or the result of `remember` */
    virtual int writeAll(const uint8_t* data, size_t bytes) = 0;

    /** Records an errno for `throwIfFailed` unless an earlier one is recorded. @return its AVERROR */
    int remember(int error_number);
    [[noreturn]] void fail(int error_number) const;

    const std::string& name() const { return name_; }

  private:
    std::string name_;
    AVIOContext* io_ = nullptr;
    int error_number_ = 0;
};

/** Checks early for a destination to which `openOutput` and `commit` would fail. @throw Failure
 * (OutputExists) */
void checkOutput(const OutputSettings& settings);

/** Opens the destination that the settings name.
 * @throw Failure (OutputExists, OutputNotWritable, NoSpace), std::bad_alloc */
std::unique_ptr<Output> openOutput(const OutputSettings& settings);

}  // namespace sonivex_tool
