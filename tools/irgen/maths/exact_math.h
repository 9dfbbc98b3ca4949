// Elementary functions that return the same bits on every machine.
//
// The exp, log, sin, cos and asin of C libraries differ in the last bit; IEEE 754 fixes only the four
// arithmetic operations and sqrt, and floor is exact. These functions are fixed series over those operations,
// accurate to 1e-14 (relative for exp, absolute for the others near 0). They expect the finite arguments of a
// design computation and handle NaN or overflow only where their comments say so.
#pragma once

namespace sonivex_irgen {

inline constexpr double kPi = 3.14159265358979323846;

/** e^x. The result is 0 for x below -708; x must be below 709. */
double exactExp(double x);

/** Natural logarithm of a normal x > 0. */
double exactLog(double x);

/** Sine of x radians; |x| must be below 1e5. */
double exactSin(double x);

/** Cosine of x radians; |x| must be below 1e5. */
double exactCos(double x);

/** Arc sine in radians of x clamped to -1..1. */
double exactAsin(double x);

/** Logarithm to base 2 of a normal x > 0. */
double exactLog2(double x);

/** Decibels of a power ratio > 0: 10 * log10(power). */
double powerToDb(double power);

/** Amplitude ratio of a level in dB: 10^(db / 20). */
double dbToAmplitude(double db);

/** Power ratio of a level in dB: 10^(db / 10). */
double dbToPower(double db);

/** Fade along half a cosine, from 1 at position 0 to 0 at position 1; the position is clamped to 0..1. */
double halfCosineFade(double position);

}  // namespace sonivex_irgen
