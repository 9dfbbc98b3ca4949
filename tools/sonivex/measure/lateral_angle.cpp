#include "lateral_angle.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <vector>

#include "ear_powers.h"
#include "rigid_sphere.h"

namespace sonivex_tool {
namespace {

constexpr int kFarthest_deg = 90;
constexpr std::size_t kAngles = 2 * kFarthest_deg + 1;  // in steps of a degree
constexpr double kDuplex_hz = 1500.0;
constexpr double kHighestBandOfRate = 0.45;
constexpr double kAudibleShare = 1e-5;    // of the whole sound's energy: -50 dB
constexpr double kLeastEarShare = 1e-4;   // a low band fainter than this at one ear has no delay
constexpr double kLeastWeight = 0.5;      // of the bands that count, where that of all bands is 1
constexpr double kAudibleLevel_db = 1.0;  // the least difference that is heard is 0.5 to 1 dB (Mills 1960)
// With less in common, the ears have no angle. A diffuse field by Lindevald & Benade (1986) has 0.08 at no
// delay, weighted as these bands are.
constexpr double kLeastClarity = 0.3;
constexpr double kBesideTheMiddle_deg = 20.0;
constexpr double kAsGood = 0.98;
// A level difference beyond this says no more about the direction.
constexpr double kLargestLevel_db = 40.0;

// Importance of the third octaves from 160 to 8000 Hz for average speech, ANSI S3.5-1997, table 3. Sum: 1.
constexpr std::array<double, 18> kImportance{0.0083, 0.0095, 0.0150, 0.0289, 0.0440, 0.0578,
                                             0.0653, 0.0711, 0.0818, 0.0844, 0.0882, 0.0898,
                                             0.0868, 0.0844, 0.0771, 0.0527, 0.0364, 0.0185};
constexpr double kLowestBand = 22.0;  // the exact centre of band n is 10^(n / 10) Hz: 158.5 Hz

// One third octave of both ears.
struct Band {
    double centre_hz;
    double weight;
    double left;   // energy
    double right;  // energy

    double low_hz() const { return centre_hz * std::pow(10.0, -0.05); }
    double high_hz() const { return centre_hz * std::pow(10.0, 0.05); }
    bool isLow() const { return centre_hz < kDuplex_hz; }
};

// One value for each angle from -90 to 90 degrees.
using PerAngle = std::array<double, kAngles>;

double angleAt(std::size_t index) {
    return static_cast<double>(index) - kFarthest_deg;
}

std::vector<Band> audibleBands(const EarPowers& ears, int rate_hz) {
    const double nyquist_hz = rate_hz / 2.0;
    const double whole = ears.sum(ears.left, 0.0, nyquist_hz) + ears.sum(ears.right, 0.0, nyquist_hz);
    std::vector<Band> bands;
    for (std::size_t i = 0; i < kImportance.size(); ++i) {
        Band band{std::pow(10.0, (kLowestBand + static_cast<double>(i)) / 10.0), kImportance.at(i), 0.0, 0.0};
        if (band.high_hz() > kHighestBandOfRate * rate_hz) break;
        band.left = ears.sum(ears.left, band.low_hz(), band.high_hz());
        band.right = ears.sum(ears.right, band.low_hz(), band.high_hz());
        bands.push_back(band);
    }
    std::erase_if(bands, [=](const Band& band) {
        const double both = band.left + band.right;
        const bool is_at_one_ear = std::min(band.left, band.right) < kLeastEarShare * both;
        return !std::isfinite(both) || both <= 0.0 || both < kAudibleShare * whole ||
               (band.isLow() && is_at_one_ear);
    });
    return bands;
}

double weightOf(const std::vector<Band>& bands, bool is_low) {
    double sum = 0.0;
    for (const Band& band : bands) sum += band.isLow() == is_low ? band.weight : 0.0;
    return sum;
}

// Returns the correlation of the ears in a band, -1 to 1, after the lead of the left ear is undone.
double correlationAt(const EarPowers& ears, const Band& band, double left_leads_us) {
    const double scale = std::sqrt(band.left * band.right);
    if (scale <= 0.0) return 0.0;
    double sum = 0.0;
    for (std::size_t k = ears.firstFrom(band.low_hz()); k < ears.firstFrom(band.high_hz()); ++k) {
        const double turn =
            2.0 * std::numbers::pi * static_cast<double>(k) * ears.bin_hz * left_leads_us * 1e-6;
        sum += (ears.cross[k] * std::polar(1.0, -turn)).real();
    }
    return sum / scale;
}

// Returns the lead of the sphere's left ear. The phase turns over at half a period. No lead exceeds one
// period: that of the highest low band, 1259 Hz, is 0.88 periods at 90 degrees.
double sphereLead_us(const Band& band, double angle_deg) {
    const double period_us = 1e6 / band.centre_hz;
    double lead_us = sphereEars(band.centre_hz, std::abs(angle_deg)).delay_us;
    if (lead_us < -1e-6) lead_us += period_us;
    return angle_deg < 0.0 ? -lead_us : lead_us;
}

// Finds the angle by delay. Returns false if the delays say nothing: the ears have too little in common, or
// they align as well on the other side, as those of a sound in opposite phase do.
bool findAngleByDelay(const EarPowers& ears, const std::vector<Band>& bands, double weight,
                      LateralAngle& result) {
    PerAngle alignment{};
    for (const Band& band : bands) {
        if (!band.isLow()) continue;
        for (std::size_t i = 0; i < kAngles; ++i) {
            alignment.at(i) +=
                band.weight / weight * correlationAt(ears, band, sphereLead_us(band, angleAt(i)));
        }
    }
    const auto best = std::max_element(alignment.begin(), alignment.end());
    result.by_delay_deg = angleAt(static_cast<std::size_t>(best - alignment.begin()));
    result.clarity = *best;
    const double mirrored = alignment.at(kAngles - 1 - static_cast<std::size_t>(best - alignment.begin()));
    const bool is_on_both_sides =
        std::abs(result.by_delay_deg) >= kBesideTheMiddle_deg && mirrored > kAsGood * result.clarity;
    return result.clarity >= kLeastClarity && !is_on_both_sides;
}

// Returns the root of the weighted mean square of the bands' deviations from the sphere's level differences,
// in dB, for each angle.
PerAngle levelMisfits_db(const std::vector<Band>& bands, double weight) {
    PerAngle misfit_db{};
    for (const Band& band : bands) {
        if (band.isLow()) continue;
        const double ratio = std::max(band.left, 1e-30) / std::max(band.right, 1e-30);
        const double difference_db =
            std::clamp(10.0 * std::log10(ratio), -kLargestLevel_db, kLargestLevel_db);
        for (std::size_t i = 0; i < kAngles; ++i) {
            const double error_db = difference_db - sphereEars(band.centre_hz, angleAt(i)).level_db;
            misfit_db.at(i) += band.weight / weight * error_db * error_db;
        }
    }
    for (double& value : misfit_db) value = std::sqrt(value);
    return misfit_db;
}

// Towards 90 degrees a sphere's level differences fall again, because sound from all sides meets in phase
// behind it, and those of a real head do much the same. The levels of a sound from the side therefore fit two
// angles, and the delay decides between angles that no listener could tell apart by level.
void findAngleByLevel(const std::vector<Band>& bands, double weight, LateralAngle& result) {
    const PerAngle misfit_db = levelMisfits_db(bands, weight);
    const double bearable_db = *std::min_element(misfit_db.begin(), misfit_db.end()) + kAudibleLevel_db;
    std::vector<double> fitting_deg;
    for (std::size_t i = 0; i < kAngles; ++i) {
        if (misfit_db.at(i) <= bearable_db) fitting_deg.push_back(angleAt(i));
    }
    result.lowest_by_level_deg = fitting_deg.front();
    result.highest_by_level_deg = fitting_deg.back();
    result.by_level_deg =
        *std::min_element(fitting_deg.begin(), fitting_deg.end(), [&](double one, double other) {
            return std::abs(one - result.by_delay_deg) < std::abs(other - result.by_delay_deg);
        });
}

}  // namespace

std::optional<LateralAngle> lateralAngle(std::span<const double> left, std::span<const double> right,
                                         int rate_hz) {
    const EarPowers ears = earPowersOf(left, right, rate_hz);
    const std::vector<Band> bands = audibleBands(ears, rate_hz);
    const double low = weightOf(bands, true);
    const double high = weightOf(bands, false);
    if (low <= 0.0 || high <= 0.0 || low + high < kLeastWeight) return std::nullopt;
    LateralAngle result;
    if (!findAngleByDelay(ears, bands, low, result)) return std::nullopt;
    findAngleByLevel(bands, high, result);
    result.angle_deg = (low * result.by_delay_deg + high * result.by_level_deg) / (low + high);
    return result;
}

}  // namespace sonivex_tool
