#pragma once

#include <cstdint>
#include <string>

#include "av_objects.h"

namespace sonivex_tool {

/** Sample format, sample rate and channel layout of audio. */
struct AudioSpec {
    AVSampleFormat format = AV_SAMPLE_FMT_NONE;
    int rate_hz = 0;
    /** In native order, or unspecified for a channel count that has no default layout. Owns no memory. */
    AVChannelLayout layout{};

    /** Channel count of the layout. */
    int channels() const { return layout.nb_channels; }
    /** Returns true if format, sample rate and layout are all equal. */
    bool operator==(const AudioSpec& other) const;
};

/** Format, rate and layout of a decoded frame. A layout that is not in native order becomes the default
 * layout of its channel count. */
AudioSpec specOf(const AVFrame& frame);

/** The default layout of a channel count; unspecified when there is none. */
AVChannelLayout defaultLayout(int channels);

/** Describes a layout as FFmpeg does: "stereo", "5.1(side)"; "unknown" when it cannot. */
std::string layoutName(const AVChannelLayout& layout);

/** Allocates a frame of `frames` samples per channel. It owns its buffer, whose contents are uninitialised.
 * @throw std::bad_alloc */
FramePtr makeFrame(const AudioSpec& spec, int frames);

/** Trims a frame in place to `keep` samples per channel, starting at sample `skip`.
 *
 * Only pointers change; no sample is copied. Requires skip + keep <= nb_samples. */
void trimFrame(AVFrame& frame, int skip, int keep);

}  // namespace sonivex_tool
