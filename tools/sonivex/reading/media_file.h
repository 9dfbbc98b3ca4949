#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "av_objects.h"
#include "demuxer_errors.h"
#include "descriptor_input.h"

namespace sonivex_tool {

/** Faults that reading a file has met so far. */
struct ReadFaults {
    uint64_t errors = 0;           // places where the demuxer returned an error; errors in a row count once
    uint64_t corrupt_packets = 0;  // of the streams that are read, as the demuxer marks them
    uint64_t messages = 0;         // errors that the demuxer logged
    bool is_given_up = false;      // reading ended although the demuxer saw no end of the file
};

/** A media file that is open for reading: its streams and their packets in file order.
 *
 * Reading goes on after an error, because a demuxer may find the next packet of a damaged file. */
class MediaFile {
  public:
    /** Opens a file and finds its streams.
     * @param path a file; "-" or "pipe:0" for standard input; or another address that libavformat opens
     * @throw Failure (InputNotReadable, or the exit code of a pending signal), std::bad_alloc */
    explicit MediaFile(const std::string& path);
    ~MediaFile();
    MediaFile(const MediaFile&) = delete;
    MediaFile& operator=(const MediaFile&) = delete;

    /** Reads the next packet of a stream that is not discarded. The packet's buffers replace what it held.
     * @return false at the end
     * @throw Failure with the exit code of a pending signal */
    bool read(AVPacket& packet);

    /** Goes on at the last place not after `seconds` on the container's clock from which a stream can be
     *  decoded.
     * @return false if the container cannot do so; what `read` returns then is unspecified */
    bool seek(int stream, double seconds);

    /** Makes `read` end soon, as if the file ended there. Any thread may call it. */
    void abandon() { is_abandoned_ = true; }

    /** Returns true if the file can be opened again after `rewind`, and then holds the same. */
    bool canRestart() const;
    /** Puts a descriptor back where it was before it was read. Nothing can be read from this object then. */
    void rewind();

    /** The opened container. Its streams' `discard` may be changed. */
    AVFormatContext& container() { return *container_; }
    const AVFormatContext& container() const { return *container_; }

    /** Returns the faults so far. */
    ReadFaults faults() const;

  private:
    void open(const std::string& path);
    void openDescriptor(const std::string& path);
    bool isOfUnknownLength(const std::string& url) const;
    void forgetStatedLength();
    bool isWholeEnd(const AVPacket& packet) const;

    std::atomic<bool> is_abandoned_ = false;
    std::unique_ptr<DescriptorInput> descriptor_;
    AVFormatContext* container_ = nullptr;
    std::optional<DemuxerErrors> messages_;
    bool is_of_unknown_length_ = false;  // the header does not state where the audio ends
    uint64_t excused_messages_ = 0;
    ReadFaults faults_;
};

}  // namespace sonivex_tool
