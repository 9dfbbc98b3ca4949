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
    /** @throw Failure (InputNotReadable; NoAudio when it is empty or ends inside a frame) */
    PcmFile(const std::string& path, const PcmFormat& format);

    const AudioSpec& spec() const { return mSpec; }

    /** The next frame, or null at the end. @throw Failure (InputNotReadable) */
    FramePtr read();

  private:
    struct Closer {
        void operator()(std::FILE* file) const { (void)std::fclose(file); }
    };

    std::string mPath;
    AudioSpec mSpec;
    std::unique_ptr<std::FILE, Closer> mFile;
};

}  // namespace sonivex_tool
