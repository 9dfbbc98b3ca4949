// Points and directions: x to the front, y to the left, z up.
#pragma once

#include <cmath>

#include "exact_math.h"

namespace sonivex_irgen {

/** A point in metres or a direction. */
struct Vector3 {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};

inline Vector3 operator+(Vector3 a, Vector3 b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline Vector3 operator-(Vector3 a, Vector3 b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline Vector3 operator*(double a, Vector3 b) {
    return {a * b.x, a * b.y, a * b.z};
}

/** Scalar product. */
inline double dot(Vector3 a, Vector3 b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}

/** Euclidean length. */
inline double length(Vector3 a) {
    return std::sqrt(dot(a, a));
}

/** Unit vector in the horizontal plane; the azimuth is positive to the left. */
inline Vector3 horizontalDirection(double azimuth_deg) {
    const double azimuth_rad = azimuth_deg * (kPi / 180.0);
    return {exactCos(azimuth_rad), exactSin(azimuth_rad), 0.0};
}

}  // namespace sonivex_irgen
