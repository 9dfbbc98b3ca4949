#include "synthetic_head.h"

#include <cmath>
#include <numbers>
#include <string_view>

#include "sofa_file.h"

namespace irgen_test {

using sonivex_irgen::HeadMeasurement;
using sonivex_irgen::HeadMeasurements;

HeadMeasurements syntheticHead() {
    constexpr double kDegree = std::numbers::pi / 180.0;
    HeadMeasurements head;
    head.rate_hz = 48000.0;
    for (int elevation = -45; elevation <= 75; elevation += 15) {
        for (int azimuth = 0; azimuth < 360; azimuth += 10) {
            HeadMeasurement& measured = head.directions.emplace_back();
            measured.direction = {std::cos(elevation * kDegree) * std::cos(azimuth * kDegree),
                                  std::cos(elevation * kDegree) * std::sin(azimuth * kDegree),
                                  std::sin(elevation * kDegree)};
            const double side = measured.direction.y;
            for (std::size_t ear = 0; ear < 2; ++ear) {
                const double towards = ear == 0 ? side : -side;
                measured.ears[ear].assign(128, 0.0);
                measured.ears[ear][static_cast<std::size_t>(std::lround(40.0 - 15.0 * towards))] =
                    std::pow(2.0, 0.5 * towards);
            }
        }
    }
    return head;
}

const HeadMeasurements* packagedHead() {
    if (std::string_view(SONIVEX_DEFAULT_SOFA).empty()) return nullptr;
    static const HeadMeasurements head = sonivex_irgen::readSofaFile(SONIVEX_DEFAULT_SOFA);
    return &head;
}

}  // namespace irgen_test
