#include "image_sources.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace sonivex_irgen {
namespace {

constexpr int kHighestOrder = 3;
constexpr double kLowestBand_hz = 125.0;
constexpr std::size_t kBands = 7;  // octaves 125 Hz to 8 kHz
constexpr double kSmallestAbsorption = 0.02;
constexpr double kLargestAbsorption = 0.95;
constexpr double kNarrowingFrom_hz = 250.0;
constexpr double kNarrowing_octaves = 5.0;
constexpr double kNarrowest = 1.2;          // exponent of the cardioid from 8 kHz up
constexpr double kSmallestCardioid = 0.05;  // limit behind the loudspeaker
constexpr double kFullWeightPart = 0.6;     // fraction of the early part

enum Wall : std::size_t { kBack, kFront, kRight, kLeft, kFloor, kCeiling, kWalls };

// Absorption of one wall. Furniture makes the walls of a room differ.
double absorptionOf(Wall wall, double average) {
    double absorption = average;
    if (wall == kRight) absorption = average + 0.04;
    if (wall == kLeft) absorption = average - 0.04;
    if (wall == kFloor) absorption = average * 1.15;
    if (wall == kCeiling) absorption = average * 1.1;
    return std::clamp(absorption, kSmallestAbsorption, kLargestAbsorption);
}

double binFrequency_hz(std::size_t bin) {
    return static_cast<double>(bin) * kRate_hz / static_cast<double>(kHeadPoints);
}

// Level change in dB (negative) of one reflection from a wall, at the kHeadBins bins.
std::vector<double> wallLevels_db(const Room& room, Wall wall) {
    std::array<double, kBands> octaves{};
    for (std::size_t band = 0; band < kBands; ++band) {
        const double part = static_cast<double>(band) / static_cast<double>(kBands - 1);
        octaves[band] =
            absorptionOf(wall, room.absorption_low + part * (room.absorption_high - room.absorption_low));
    }
    std::vector<double> level_db(kHeadBins);
    for (std::size_t k = 0; k < kHeadBins; ++k) {
        const double frequency_hz = std::max(binFrequency_hz(k), kLowestBand_hz);
        const double place =
            std::min(exactLog2(frequency_hz / kLowestBand_hz), static_cast<double>(kBands - 1));
        const auto below = std::min(static_cast<std::size_t>(std::floor(place)), kBands - 2);
        const double fraction = place - static_cast<double>(below);
        level_db[k] = powerToDb(1.0 - (octaves[below] + fraction * (octaves[below + 1] - octaves[below])));
    }
    return level_db;
}

// Directivity of the loudspeaker at the kHeadBins bins: the exponent of its cardioid.
std::vector<double> narrowing() {
    std::vector<double> exponents(kHeadBins);
    for (std::size_t k = 0; k < kHeadBins; ++k) {
        const double frequency_hz = std::max(binFrequency_hz(k), kNarrowingFrom_hz);
        exponents[k] = kNarrowest *
                       std::clamp(exactLog2(frequency_hz / kNarrowingFrom_hz) / kNarrowing_octaves, 0.0, 1.0);
    }
    return exponents;
}

// One coordinate of an image source, with the reflections it stands for.
struct Reflected {
    double place_m;
    int hits_low;   // reflections from the wall at 0
    int hits_high;  // reflections from the wall at the room's size
    double sense;   // -1 if the image faces the other way
};

// Mirrors a coordinate into the room `cell` rooms away from the real one.
Reflected reflect(double place_m, double size_m, int cell) {
    const bool is_mirrored = cell % 2 != 0;
    const int hits = cell < 0 ? -cell : cell;
    const int more = (hits + 1) / 2;
    const int fewer = hits / 2;
    return {is_mirrored ? (cell + 1) * size_m - place_m : cell * size_m + place_m, cell < 0 ? more : fewer,
            cell < 0 ? fewer : more, is_mirrored ? -1.0 : 1.0};
}

double earlyWeight(double delay_s, double early_end_s) {
    const double full_until_s = kFullWeightPart * early_end_s;
    return halfCosineFade((delay_s - full_until_s) / (early_end_s - full_until_s));
}

// Level of an image relative to the direct sound, from its distance, the walls and the angle off the
// loudspeaker's axis.
class ImageLevels {
  public:
    explicit ImageLevels(const Room& room) : narrowing_(narrowing()) {
        for (std::size_t wall = 0; wall < kWalls; ++wall)
            walls_db_[wall] = wallLevels_db(room, static_cast<Wall>(wall));
    }

    std::vector<double> level_db(double amplitude, const std::array<int, kWalls>& hits,
                                 double cosine_off_axis) const {
        const double distance_db = 2.0 * powerToDb(amplitude);
        const double cardioid_db =
            2.0 * powerToDb(std::max(0.5 * (1.0 + cosine_off_axis), kSmallestCardioid));
        std::vector<double> sum_db(kHeadBins);
        for (std::size_t k = 0; k < kHeadBins; ++k) {
            sum_db[k] = distance_db;
            for (std::size_t wall = 0; wall < kWalls; ++wall) sum_db[k] += hits[wall] * walls_db_[wall][k];
            sum_db[k] += narrowing_[k] * cardioid_db;
        }
        return sum_db;
    }

  private:
    std::array<std::vector<double>, kWalls> walls_db_;
    std::vector<double> narrowing_;
};

}  // namespace

std::vector<ImageSource> imageSources(const Room& room, double azimuth_deg) {
    const ImageLevels levels(room);
    const Vector3 outward = horizontalDirection(azimuth_deg);
    const Vector3 loudspeaker_m = room.listener_m + room.distance_m * outward;
    std::vector<ImageSource> images;
    for (int i = -kHighestOrder; i <= kHighestOrder; ++i) {
        for (int j = -kHighestOrder; j <= kHighestOrder; ++j) {
            for (int k = -kHighestOrder; k <= kHighestOrder; ++k) {
                const Reflected x = reflect(loudspeaker_m.x, room.size_m.x, i);
                const Reflected y = reflect(loudspeaker_m.y, room.size_m.y, j);
                const Reflected z = reflect(loudspeaker_m.z, room.size_m.z, k);
                const std::array<int, kWalls> hits{x.hits_low,  x.hits_high, y.hits_low,
                                                   y.hits_high, z.hits_low,  z.hits_high};
                int order = 0;
                for (const int count : hits) order += count;
                if (order < 1 || order > kHighestOrder) continue;

                const Vector3 seen_m = Vector3{x.place_m, y.place_m, z.place_m} - room.listener_m;
                const double distance_m = length(seen_m);
                const double delay_s = (distance_m - room.distance_m) / kSpeedOfSound_m_s;
                if (delay_s >= room.early_end_s) continue;
                const Vector3 direction = (1.0 / distance_m) * seen_m;
                const Vector3 axis{-x.sense * outward.x, -y.sense * outward.y, -z.sense * outward.z};
                images.push_back(
                    {direction, delay_s, earlyWeight(delay_s, room.early_end_s),
                     levels.level_db(room.distance_m / distance_m, hits, -dot(axis, direction))});
            }
        }
    }
    return images;
}

EarSignals earlyReflections(const HeadModel& head, const Room& room, double azimuth_deg,
                            std::size_t samples) {
    EarSignals ears;
    for (std::vector<double>& ear : ears) ear.assign(samples, 0.0);
    for (const ImageSource& image : imageSources(room, azimuth_deg)) {
        EarSpectra heard_db = head.transfer_db(image.direction);
        const auto arrivals = head.arrivals(image.direction, kOrigin_samples + image.delay_s * kRate_hz);
        for (std::size_t ear = 0; ear < kEars; ++ear) {
            for (std::size_t k = 0; k < kHeadBins; ++k) heard_db[ear][k] += image.level_db[k];
            addResponse(earResponse(heard_db[ear]), image.weight, arrivals[ear], ears[ear]);
        }
    }
    return ears;
}

}  // namespace sonivex_irgen
