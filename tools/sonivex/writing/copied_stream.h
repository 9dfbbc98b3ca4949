#pragma once

#include <cstdint>

#include "av_objects.h"
#include "timestamp_repair.h"

namespace sonivex_tool {

/** A stream of the input whose packets go to the output unchanged. */
class CopiedStream {
  public:
    /** Adds a stream like `source` to the muxer: codec, tags, disposition, rates, aspect ratio and side data.
     * @param muxer must outlive this object, as must `source`
     * @param origin_us time of the input that becomes 0 in the output, in microseconds
     * @throw std::bad_alloc, Failure (OutputFormat) */
    CopiedStream(const AVStream& source, AVFormatContext& muxer, int64_t origin_us);

    /** Gives a packet of the source the times and the stream index of the output. Call it after the muxer's
     * header
     * is written, since the muxer chooses the time base. */
    void adapt(AVPacket& packet);

    /** The number of packets so far whose times had to be repaired. */
    uint64_t repaired() const { return repair_.repaired(); }

  private:
    const AVStream& source_;
    AVStream* output_;
    int64_t shift_;  // added to every time, in the source's time base
    TimestampRepair repair_;
};

/** Adds a file such as a font to the muxer, which must support attachments.
 * @throw std::bad_alloc, Failure (OutputFormat) */
void addAttachment(const AVStream& source, AVFormatContext& muxer);

/** Adds a picture to the muxer as an attached file, as Matroska stores cover art.
 * @throw std::bad_alloc */
void addPictureAsAttachment(const AVStream& source, AVFormatContext& muxer);

/** Adds the chapters of the input to the muxer. @throw std::bad_alloc */
void addChapters(const AVFormatContext& source, AVFormatContext& muxer, int64_t origin_us);

}  // namespace sonivex_tool
