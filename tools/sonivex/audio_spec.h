#pragma once

#include <cstdint>
#include <string>

#include "av_objects.h"

namespace sonivex_tool {

/** How samples are laid out in time, space and memory. */
struct AudioSpec {
    AVSampleFormat format = AV_SAMPLE_FMT_NONE;
    int rate_hz = 0;
    /** Of native order; unspecified only for a channel count that has no default layout. Owns no memory. */
    AVChannelLayout layout{};

    int channels() const { return layout.nb_channels; }
    bool operator==(const AudioSpec& other) const;
};

/** Format, rate and layout of a decoded frame. A custom or unspecified layout becomes the default one of its
 * channel count.
 */
AudioSpec specOf(const AVFrame& frame);

/** The default layout of a channel count. */
AVChannelLayout defaultLayout(int channels);

/** "stereo", "5.1", … */
std::string layoutName(const AVChannelLayout& layout);

/** A new frame of `frames` samples per channel, with a buffer of its own whose contents are open.
 *  @throw std::bad_alloc */
FramePtr makeFrame(const AudioSpec& spec, int frames);

/** Cut a frame down to `keep` samples per channel from `skip` on; only pointers move. At most 8 planes. */
void trimFrame(AVFrame& frame, int skip, int keep);

}  // namespace sonivex_tool
