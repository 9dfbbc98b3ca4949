// Elementary functions that give the same bits on every machine.
//
// C libraries differ in the last bit of exp, log, sin, cos and asin; IEEE 754 fixes only the four operations,
// sqrt and floor. So these are fixed series over those, right to 1e-14 (relative for exp, absolute for the
// others near 0). They are for the finite arguments of a design computation and have no NaN or overflow
// handling beyond what is said.
#pragma once

namespace sonivex_irgen {

inline constexpr double kPi = 3.14159265358979323846;

/** e^x. Below -708 the result is 0; x must be below 709. */
double exactExp(double x);

/** Natural logarithm of a normal x > 0. */
double exactLog(double x);

/** Sine and cosine of x radians, |x| below 1e5. */
double exactSin(double x);
double exactCos(double x);

/** Arc sine in radians; x is first limited to -1..1. */
double exactAsin(double x);

/** log to the base 2. */
double exactLog2(double x);

/** Decibels of a power ratio > 0: 10 * log10(power). */
double powerToDb(double power);

/** Amplitude ratio of a level in dB: 10^(db / 20). */
double dbToAmplitude(double db);

/** Power ratio of a level in dB: 10^(db / 10). */
double dbToPower(double db);

/** Falls from 1 at position 0 to 0 at position 1 along half a cosine; the position is first limited to 0..1.
 */
double halfCosineFade(double position);

}  // namespace sonivex_irgen
