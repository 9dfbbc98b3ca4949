#pragma once

#include <atomic>
#include <cstddef>
#include <string>

#include "av_objects.h"

namespace sonivex_tool {

/** Lets libavformat read an open file descriptor, such as standard input.
 *
 * A read that waits for a slow pipe ends soon after a signal, whichever thread received it. A descriptor of a
 * regular file can seek; position 0 is where the descriptor stood at first. */
class DescriptorInput {
  public:
    /** Whether this object closes the descriptor at its end. */
    enum class Closing { Leave, Close };

    /** @param descriptor open for reading
     *  @param is_abandoned makes reads end with AVERROR_EXIT, as a pending signal does; outlives this object
     *  @throw std::bad_alloc */
    DescriptorInput(int descriptor, Closing closing, const std::atomic<bool>& is_abandoned);
    ~DescriptorInput();
    DescriptorInput(const DescriptorInput&) = delete;
    DescriptorInput& operator=(const DescriptorInput&) = delete;

    /** Puts the descriptor of a regular file back where it stood at first. */
    void rewind();

    static constexpr size_t kMostHeadBytes = size_t{64} * 1024;

    /** Returns the first bytes that were read, up to kMostHeadBytes. */
    const std::string& head() const { return head_; }

    /** The context to read from; owned by this object. */
    AVIOContext* io() { return io_; }

  private:
    static int readPacket(void* opaque, uint8_t* buffer, int size);
    static int64_t seek(void* opaque, int64_t offset, int whence);

    int descriptor_;
    Closing closing_;
    const std::atomic<bool>& is_abandoned_;
    int64_t origin_ = 0;  // position of the descriptor at first, in bytes
    std::string head_;
    AVIOContext* io_ = nullptr;
};

/** Returns true if `path` means standard input: "-", "pipe:" or "pipe:0". */
bool isStandardInput(const std::string& path);

}  // namespace sonivex_tool
