// Spectrum of speech, by which delays between the ears are weighted.
#pragma once

namespace sonivex_irgen {

/** Power density of speech in dB with an arbitrary reference: the long-term average spectrum of Byrne et al.
 *  1994, men and women together, interpolated over log f between its third octaves. It is held beyond the
 *  outer ones, 63 Hz and 16 kHz. */
double speechDensity_db(double frequency_hz);

}  // namespace sonivex_irgen
