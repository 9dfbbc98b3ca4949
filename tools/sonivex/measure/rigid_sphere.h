#pragma once

#include <complex>

namespace sonivex_tool {

// Sound at the surface of a rigid sphere, the simplest model of a head. The ears are opposite points.
//
//   p(t) = sum over m of  i (-i)^m (2 m + 1) P_m(cos t) / ((ka)^2 h'_m(ka)),   k = 2 pi f / c
//
// for a plane wave that meets the point at the angle t from the direction of the source. h_m is the spherical
// Hankel function of the first kind and h'_m its derivative, P_m the Legendre polynomial, a the radius.
// Source: Lord Rayleigh, Phil. Trans. R. Soc. A 203 (1904); Duda & Martens, JASA 104 (1998).

constexpr double kSpeedOfSound_m_s = 343.0;
constexpr double kHeadRadius_m = 0.0875;  // the average adult head (Hartley & Fry 1921)

/** Returns the sound pressure at a point of the surface, relative to that at the centre without the sphere.
 *  Its magnitude is 1 at low frequencies and 2 at high ones where the surface faces the source. A delay turns
 *  its phase backwards (time factor exp(+i 2 pi f t)).
 *  @param frequency_hz 1 to 20000
 *  @param incidence_deg angle between the directions of the source and of the point, 0 to 180 */
std::complex<double> spherePressure(double frequency_hz, double incidence_deg);

/** The differences between the ears of a sphere. Both are positive for a source on the left. */
struct SphereEars {
    double delay_us = 0.0;  // lead of the left ear's phase
    double level_db = 0.0;  // left ear over right ear
};

/** Returns the differences between the ears for a distant source.
 *  @param frequency_hz 1 to 20000. From 650 Hz on, the lead of a source at the side exceeds half a period,
 *                      and the delay returned is one or more periods too small
 *  @param lateral_deg  angle of the source to the plane between the ears, -90 (right) to 90 (left) */
SphereEars sphereEars(double frequency_hz, double lateral_deg);

}  // namespace sonivex_tool
