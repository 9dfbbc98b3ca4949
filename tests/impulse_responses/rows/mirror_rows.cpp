#include <cmath>
#include <string>

#include "decay.h"
#include "diffuseness.h"
#include "quality_rows.h"
#include "row_loops.h"

namespace response_quality {
namespace {

// Energy of an ear of the left source relative to the same ear of its mirror image on the right: near ear
// with near ear, far ear with far ear. `heard` picks the part of the responses.
template <typename Part>
Row overMirroredEars(const Responses& responses, const char* measure, double limit_db, Part heard) {
    return overPairs(responses, measure, "dB", anySet,
                     [limit_db, &heard](Row& row, const ResponseSet&, const Source& left, const Source& right,
                                        const std::string& name) {
                         const Ears a = heard(left.ears);
                         const Ears b = heard(right.ears);
                         const double near_db = 10.0 * std::log10(energyOf(a[0]) / energyOf(b[1]));
                         const double far_db = 10.0 * std::log10(energyOf(a[1]) / energyOf(b[0]));
                         row.figures.push_back({name + " near ear", near_db, -limit_db, limit_db});
                         row.figures.push_back({name + " far ear", far_db, -limit_db, limit_db});
                     });
}

}  // namespace

Row mirroredDirectLevels(const Responses& responses) {
    return overMirroredEars(responses, "mirrored pair, direct level difference", 0.4,
                            [](const Ears& ears) { return directSound(ears); });
}

Row mirroredEnergies(const Responses& responses) {
    return overMirroredEars(responses, "mirrored pair, energy difference", 1.0,
                            [](const Ears& ears) { return ears; });
}

Row mirroredTailCorrelations(const Responses& responses) {
    return overPairs(
        responses, "mirrored pair, correlation of the tails", "", anySet,
        [](Row& row, const ResponseSet&, const Source& left, const Source& right, const std::string& name) {
            const std::size_t left_start = tailStart(left.ears);
            const std::size_t right_start = tailStart(right.ears);
            for (std::size_t i = 0; i < 4; ++i) {
                const double value =
                    correlation(tailOf(left.ears[i / 2], left_start), tailOf(right.ears[i % 2], right_start));
                row.figures.push_back(
                    {name + kEarNames[i / 2] + " with mirror's" + kEarNames[i % 2], value, -0.35, 0.35});
            }
        });
}

}  // namespace response_quality
