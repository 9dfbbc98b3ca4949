// The rooms in which the loudspeakers stand.
#pragma once

#include "vector3.h"

namespace sonivex_irgen {

/** A rectangular room with a listener and loudspeakers on a circle around the listener. */
struct Room {
    Vector3 size_m;                     // front to back, side to side, height
    Vector3 listener_m;                 // from the back wall, the right wall and the floor
    double distance_m = 0.0;            // from the listener to each loudspeaker
    double absorption_low = 0.0;        // fraction of the energy that a wall absorbs at 125 Hz and below
    double absorption_high = 0.0;       // the same at 8 kHz and above
    double reverberation_time_s = 0.0;  // at 1 kHz
    double early_end_s = 0.0;           // end of the early part, which is made of single reflections

    /** Volume in cubic metres. */
    double volume_m3() const { return size_m.x * size_m.y * size_m.z; }
};

// The listener sits off the middle of each room. In a mirror-symmetric room a mono programme would reach both
// ears identically and stay inside the head.

/** Listening room. EBU Tech 3276 and ITU-R BS.1116 give a reverberation time of
 *  0.25 s * (V / 100 m3)^(1/3), 0.23 s for this volume; the room has 0.25 s. */
inline constexpr Room kListeningRoom{{6.0, 4.6, 2.7}, {2.90, 2.42, 1.2}, 1.9, 0.25, 0.72, 0.25, 0.030};
inline constexpr Room kSmallRoom{{4.4, 3.6, 2.5}, {2.10, 1.95, 1.2}, 1.4, 0.30, 0.78, 0.15, 0.022};
inline constexpr Room kMiddleRoom{{6.0, 4.6, 2.7}, {2.90, 2.42, 1.2}, 1.9, 0.25, 0.72, 0.20, 0.030};
inline constexpr Room kLargeRoom{{9.0, 7.2, 3.6}, {4.30, 3.75, 1.3}, 2.6, 0.20, 0.65, 0.27, 0.040};

}  // namespace sonivex_irgen
