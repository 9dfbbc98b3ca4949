#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "audio_spec.h"
#include "pcm_format.h"

namespace sonivex_tool {

/** The frames of a file of bare interleaved 16-bit samples in machine byte order, as the filter dumps them.
 */
class PcmFile {
  public:
    /** @throw Failure (InputNotReadable; NoAudio when it holds no whole frame, or ends inside one that was
     * not simply cut off) */
    PcmFile(const std::string& path, const PcmFormat& format);

    const AudioSpec& spec() const { return spec_; }

    /** Bytes behind the last whole frame, which are not read. */
    int restBytes() const { return rest_bytes_; }

    /** The next frame, or null at the end. @throw Failure (InputNotReadable) */
    FramePtr read();

  private:
    struct Closer {
        void operator()(std::FILE* file) const { (void)std::fclose(file); }
    };

    std::string path_;
    AudioSpec spec_;
    int rest_bytes_ = 0;
    std::unique_ptr<std::FILE, Closer> file_;
};

}  // namespace sonivex_tool
