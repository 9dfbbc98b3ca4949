#pragma once

#include <string>

#include "audio_spec.h"
#include "pcm_format.h"

namespace sonivex_tool {

/** Reads a file of bare interleaved 16-bit samples in machine byte order, as the filter dumps them. */
class PcmFile {
  public:
    /** Opens the file and checks its size.
     * @throw Failure InputNotReadable if the file cannot be opened
     * @throw Failure NoAudio if it holds no whole frame, or ends inside a frame and `format.broken_end` is
     * not CutOff */
    PcmFile(const std::string& path, const PcmFormat& format);
    ~PcmFile();
    PcmFile(const PcmFile&) = delete;
    PcmFile& operator=(const PcmFile&) = delete;

    /** Spec of every frame. */
    const AudioSpec& spec() const { return spec_; }

    /** Bytes after the last whole frame; they are not read. */
    int restBytes() const { return rest_bytes_; }

    /** Returns the next frame, or null at the end.
     * @throw Failure (InputNotReadable, or the exit code of a pending signal), std::bad_alloc */
    FramePtr read();

  private:
    void checkSize(const PcmFormat& format);
    std::size_t readBytes(unsigned char* bytes, std::size_t wanted);

    std::string path_;
    AudioSpec spec_;
    int rest_bytes_ = 0;
    int descriptor_ = -1;
};

}  // namespace sonivex_tool
