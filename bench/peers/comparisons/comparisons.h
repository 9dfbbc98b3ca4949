// The comparisons and the figures, one function each. Every one of them adds its rows to a report; one that
// finds a wrong output throws std::runtime_error.
#pragma once

#include "effort.h"
#include "report.h"

namespace compare {

/** Compares surround with other convolution engines. Checks each engine's output for every layout and type,
 *  then reports processor times and ratios. */
void compareSurround(Report& report, const Effort& effort);

/** Reports surround's own figures: memory, set-up time, single calls, and the cost of different signals. */
void measureSurround(Report& report, const Effort& effort);

/** Compares surround at each vector width of the processor with the scalar engine. Checks that all outputs
 *  are equal, then reports processor times and ratios. */
void compareVectorWidths(Report& report, const Effort& effort);

/** Compares the normalizer with FFmpeg's alimiter, stereo, at the same gain: speech with peaks at -20 dBFS,
 *  raised by 20 dB, and music with peaks at -1 dBFS, whose level does not change. Checks both outputs, then
 *  reports their processor times and ratio. */
void compareNormalizer(Report& report, const Effort& effort);

/** Compares dialogue enhancement with the four transforms that each of its hops needs. Reports processor
 *  time per hop. Adds only a note if the library has no dialogue enhancement. */
void compareDialogue(Report& report, const Effort& effort);

/** Reports the processor time of surround alone and within the filter, for s16 and fltp frames: the
 *  difference is the cost of queues and of conversion to 16 bits and back. The filter's 16-bit output must be
 *  the effect's. */
void measureFilter(Report& report, const Effort& effort);

}  // namespace compare
