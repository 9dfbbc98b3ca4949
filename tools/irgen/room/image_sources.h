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
    double delay_s;                // after the direct sound
    double weight;                 // 1, fading to 0 towards the end of the early part
    std::vector<double> level_db;  // relative to the direct sound, at the kHeadBins bins
};

/** Image sources, up to third order, of a loudspeaker at ear height that points at the listener. Images that
 *  arrive room.early_end_s or later after the direct sound are left out.
 *  @param azimuth_deg of the loudspeaker, left positive */
std::vector<ImageSource> imageSources(const Room& room, double azimuth_deg);

/** Sound of all image sources at the ears.
 *  @param azimuth_deg of the loudspeaker, left positive
 *  @param samples     length of each ear's signal
 *  @return signals on whose time axis the direct sound reaches the centre of the head at kOrigin_samples */
EarSignals earlyReflections(const HeadModel& head, const Room& room, double azimuth_deg, std::size_t samples);

}  // namespace sonivex_irgen
