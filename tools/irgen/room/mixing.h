// Mixes the components of a loudspeaker to a ratio of direct to reverberant sound.
//
// The ratio is set octave by octave, because an ear judges each band by itself. Over all energy above 300 Hz,
// 5 to 20 kHz would decide it, and the room could drown the middle octaves, in which a direction is heard.
//
//   P_d, P_e, P_t   power of direct sound, reflections and tail over the octave around each bin, both ears
//   t               wanted reverberant power over direct power
//   reflections     g_e = min(-4 dB, 0.35 t P_d / P_e)
//   tail            g_t = max(t P_d - g_e P_e, 0.05 t P_d) / P_t
//
// Each gain is a minimum-phase filter, the same for both ears.
#pragma once

#include <vector>

#include "source_components.h"

namespace sonivex_irgen {

/** Wanted direct-to-reverberant ratio in dB at a frequency: level_db up to 4 kHz, 1 dB more at 8 kHz, 3 dB
 *  more from 16 kHz up. */
double wantedRatio_db(double frequency_hz, double level_db);

/** Mixes one loudspeaker. Its components have at most 32768 samples.
 *  @param level_db see wantedRatio_db */
EarSignals mixComponents(const SourceComponents& components, double level_db);

/** Mixes loudspeakers whose responses add up at each ear, because both get the same channel there. The ratio
 *  is that of the sum: one filter for all reflections and one for all tails. */
std::vector<EarSignals> mixSummed(const std::vector<SourceComponents>& group, double level_db);

/** Mixes one loudspeaker to a ratio over all energy above 300 Hz, without filters. It is for the
 *  low-frequency channel, whose room is faint in every octave. */
EarSignals mixBroadband(const SourceComponents& components, double ratio_db);

}  // namespace sonivex_irgen
