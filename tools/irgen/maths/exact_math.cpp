#include "exact_math.h"

#include <bit>
#include <cmath>
#include <cstdint>

namespace sonivex_irgen {
namespace {

constexpr double kLn10 = 2.30258509299404568402;

// Constants split into two or three parts. The leading parts end in zero bits, so their whole multiples are
// exact and the reduced argument keeps its last bits.
constexpr double kLn2High = 0x1.62e42fefap-1;
constexpr double kLn2Low = 0x1.cf79abc9e3b3ap-40;
constexpr double kHalfPiHigh = 0x1.921fb544p+0;
constexpr double kHalfPiMiddle = 0x1.0b4611a6p-34;
constexpr double kHalfPiLow = 0x1.3198a2e037073p-69;

constexpr int kMantissaBits = 52;
constexpr std::int64_t kExponentBias = 1023;

double powerOfTwo(std::int64_t exponent) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(exponent + kExponentBias) << kMantissaBits);
}

// Taylor series of the sine for |r| <= pi/4.
double sineSeries(double r) {
    double sum = 0.0;
    const double square = r * r;
    for (int n = 19; n >= 3; n -= 2) sum = (1.0 + sum) * (-square / ((n - 1) * n));
    return r + r * sum;
}

// Taylor series of the cosine for |r| <= pi/4.
double cosineSeries(double r) {
    double sum = 0.0;
    const double square = r * r;
    for (int n = 20; n >= 2; n -= 2) sum = (1.0 + sum) * (-square / ((n - 1) * n));
    return 1.0 + sum;
}

// sin(x + quarter_turns * pi/2)
double turnedSine(double x, std::int64_t quarter_turns) {
    const double turns = std::floor(x / (0.5 * kPi) + 0.5);
    const double r = ((x - turns * kHalfPiHigh) - turns * kHalfPiMiddle) - turns * kHalfPiLow;
    const std::int64_t quadrant = (static_cast<std::int64_t>(turns) + quarter_turns) & 3;
    const double value = (quadrant & 1) != 0 ? cosineSeries(r) : sineSeries(r);
    return quadrant >= 2 ? -value : value;
}

// Maclaurin series of the arc sine for |x| <= 0.5; each term is at most a quarter of the one before.
double arcSineSeries(double x) {
    const double square = x * x;
    double term = x;
    double sum = x;
    for (int n = 1; n <= 28; ++n) {
        term *= square * (2.0 * n - 1.0) / (2.0 * n);
        sum += term / (2.0 * n + 1.0);
    }
    return sum;
}

}  // namespace

double exactExp(double x) {
    if (x < -708.0) return 0.0;
    const double exponent = std::floor(x * 1.44269504088896340736 + 0.5);
    const double r = (x - exponent * kLn2High) - exponent * kLn2Low;  // |r| <= ln(2)/2
    double sum = 1.0;
    for (int n = 16; n >= 1; --n) sum = 1.0 + sum * r / n;
    return sum * powerOfTwo(static_cast<std::int64_t>(exponent));
}

double exactLog(double x) {
    const auto bits = std::bit_cast<std::uint64_t>(x);
    std::int64_t exponent = static_cast<std::int64_t>(bits >> kMantissaBits) - kExponentBias;
    constexpr std::uint64_t kMantissaMask = (std::uint64_t{1} << kMantissaBits) - 1;
    double m = std::bit_cast<double>((bits & kMantissaMask) |
                                     (static_cast<std::uint64_t>(kExponentBias) << kMantissaBits));
    if (m > 1.41421356237309504880) {
        m *= 0.5;
        ++exponent;
    }
    // log(m) = 2 artanh(s), |s| <= 0.172
    const double s = (m - 1.0) / (m + 1.0);
    const double square = s * s;
    double sum = 0.0;
    for (int n = 23; n >= 3; n -= 2) sum = (sum + 1.0 / n) * square;
    const auto e = static_cast<double>(exponent);
    return e * kLn2High + (2.0 * s + (2.0 * s * sum + e * kLn2Low));
}

double exactSin(double x) {
    return turnedSine(x, 0);
}

double exactCos(double x) {
    return turnedSine(x, 1);
}

double exactAsin(double x) {
    const double magnitude = x < 0.0 ? -x : x;
    double angle = 0.5 * kPi;
    if (magnitude <= 0.5) {
        angle = arcSineSeries(magnitude);
    } else if (magnitude < 1.0) {
        angle = 0.5 * kPi - 2.0 * arcSineSeries(std::sqrt(0.5 * (1.0 - magnitude)));
    }
    return x < 0.0 ? -angle : angle;
}

double exactLog2(double x) {
    return exactLog(x) * 1.44269504088896340736;
}

double powerToDb(double power) {
    return exactLog(power) * (10.0 / kLn10);
}

double dbToAmplitude(double db) {
    return exactExp(db * (kLn10 / 20.0));
}

double dbToPower(double db) {
    return exactExp(db * (kLn10 / 10.0));
}

double halfCosineFade(double position) {
    if (position <= 0.0) return 1.0;
    if (position >= 1.0) return 0.0;
    return 0.5 + 0.5 * exactCos(kPi * position);
}

}  // namespace sonivex_irgen
