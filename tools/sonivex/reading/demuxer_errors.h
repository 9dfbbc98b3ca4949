#pragma once

#include <cstdint>

#include "av_objects.h"

namespace sonivex_tool {

/** Counts the signs of damage that libavformat logs about one opened file.
 *
 * A demuxer that loses its place in a damaged file looks for the next packet that it understands, and tells
 * nobody but the log. The messages also go where they went without this object. */
class DemuxerErrors {
  public:
    /** Begins to count. @param container outlives this object */
    explicit DemuxerErrors(const AVFormatContext* container);
    ~DemuxerErrors();
    DemuxerErrors(const DemuxerErrors&) = delete;
    DemuxerErrors& operator=(const DemuxerErrors&) = delete;

    /** Returns the number of errors so far. */
    uint64_t count() const;

  private:
    const AVFormatContext* container_;
};

}  // namespace sonivex_tool
