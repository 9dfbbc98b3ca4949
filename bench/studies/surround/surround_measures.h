// The three measurements of the study. Each prints Markdown tables on standard output.
#pragma once

#include "study_plot.h"

namespace study {

/** Measures how far to the side each loudspeaker is heard. @return the figure of 7.1 */
Figure measureAngles();

/** Measures the bass of noise on one side, on both, and the same on both. @return the figure of 3DSurround */
Figure measureBass();

/** Measures the change of loudness, by material. */
void measureLoudness();

}  // namespace study
