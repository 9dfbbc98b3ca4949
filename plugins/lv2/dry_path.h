// The unprocessed sound that a bypassed plug-in puts out, as late as the effect's sound:
//
//   equal channel counts   out[c][n] = in[c][n - delay]
//   to stereo              left  = L + (C + Lb + Ls) * sqrt(1/2)     right = R + (C + Rb + Rs) * sqrt(1/2)
//
// The downmix is that of ITU-R BS.775, without the low-frequency channel. Like the downmix of most players it
// is not scaled down, so that the front channels keep their level; loud sounds in all channels may exceed
// full scale.
#pragma once

#include <vector>

#include "crossfade.h"
#include "plugin_kinds.h"

namespace sonivex_lv2 {

/** The delay line. */
class DryPath {
  public:
    /** @param delay_frames 0 or more. Throws std::bad_alloc. */
    DryPath(const PluginKind& kind, int delay_frames);

    /** Makes everything inside silent. [any] real-time safe */
    void reset();

    /** Delays the next frames.
     *  @param in  [channels_in][frames].
     *  @param out [channels_out][frames], overwritten. Must not overlap `in`.
     *  [any] real-time safe */
    void render(ConstPlanes in, Planes out, int frames);

  private:
    // The frames that have not come out yet: one line of the delay's length for each channel of the output.
    float* lineOf(int channel);

    int channels_in_;
    int channels_out_;
    int delay_frames_;
    int position_ = 0;
    std::vector<float> lines_;
};

}  // namespace sonivex_lv2
