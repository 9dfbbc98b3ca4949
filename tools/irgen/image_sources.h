// Early reflections of a rectangular room: the loudspeaker mirrored in the walls (Allen & Berkley 1979).
#pragma once

#include <vector>

#include "constants.h"
#include "head_model.h"
#include "room.h"
#include "vector3.h"

namespace sonivex_irgen {

/** A loudspeaker mirrored in one to three walls. */
struct ImageSource {
    Vector3 direction;             // unit vector from the listener
    double delay_s;                // behind the direct sound
    double weight;                 // 1, fading out before the end of the early part
    std::vector<double> level_db;  // against the direct sound, at the kHeadBins bins
};

/** The images of a loudspeaker at ear height that points at the listener, which are heard before
 * room.early_end_s. */
std::vector<ImageSource> imageSources(const Room& room, double azimuth_deg);

/** What the ears hear of them: `samples` samples each, with the direct sound's kOrigin_samples as time 0. */
EarSignals earlyReflections(const HeadModel& head, const Room& room, double azimuth_deg, std::size_t samples);

}  // namespace sonivex_irgen
