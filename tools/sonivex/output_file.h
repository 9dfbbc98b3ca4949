#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "av_objects.h"

namespace sonivex_tool {

/** A file that appears only when it is whole.
 *
 *  It is written under a temporary name in the folder where it shall be, and renamed by `commit`. Without a
 * commit the destructor removes it, and so does a second signal (see interrupt.h), of one such object. A
 * symbolic link is followed: what it points at is replaced. */
class OutputFile {
  public:
    /** Say early what would stop `commit`. @throw Failure (OutputExists) */
    static void check(const std::string& path, bool replace);

    /** @param replace whether a file of this name may be replaced; else `commit` never does.
     *  @throw Failure (OutputExists, OutputNotWritable, NoSpace), here and below */
    OutputFile(const std::string& path, bool replace);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    /** For a muxer; owned by this object. What fails inside is raised by `throwIfFailed`. */
    AVIOContext* io() { return io_; }

    /** Raise the first write or seek that failed. */
    void throwIfFailed() const;

    /** Write what is buffered through to the disk, close, and give the file its name. */
    void commit();

  private:
    void createTemporary();
    void giveName();
    /** @return the AVERROR of an error that `throwIfFailed` shall raise, if it is the first. */
    int remember(int error_number);
    int writeAll(const uint8_t* data, size_t bytes);
    int64_t seek(int64_t offset, int whence);
    [[noreturn]] void fail(int error_number) const;
    void close();

    std::string name_;         // as the user wrote it, for messages
    std::string destination_;  // symbolic links followed
    bool replace_;
    std::string temporary_;  // empty when there is none to remove
    int descriptor_ = -1;
    AVIOContext* io_ = nullptr;
    int error_number_ = 0;
};

}  // namespace sonivex_tool
