#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "lateral_angle.h"
#include "material.h"
#include "scenes.h"
#include "surround_measures.h"

namespace study {
namespace {

using sonivex_tool::LateralAngle;
using test::Pcm;

// A second of noise, and a second in which the room decays.
Sound burst() {
    constexpr double kLevel_dbfs = -26.0;
    Sound noise = atLevel({speechNoise(1, kRate_hz)}, kLevel_dbfs)[0];
    noise.resize(std::size_t{2} * kRate_hz);
    return noise;
}

LateralAngle heardAngle(const Layout& layout, std::size_t channel, const SurroundType& type) {
    const Pcm out = rendered(onChannel(burst(), layout.channels, channel), type);
    const auto angle = sonivex_tool::lateralAngle(channelOf(out, 2, 0), channelOf(out, 2, 1), kRate_hz);
    if (!angle) throw std::runtime_error("a loudspeaker has no angle: it is silent or at one ear alone");
    return *angle;
}

// The end of the range by level that is nearest to the middle.
double leastByLevel_deg(const LateralAngle& angle) {
    return std::clamp(0.0, angle.lowest_by_level_deg, angle.highest_by_level_deg);
}

// The angle of a direction to the middle plane: 140 degrees is as far to the side as 40.
double lateralOf_deg(double azimuth_deg) {
    const double beyond_deg = std::max(0.0, std::abs(azimuth_deg) - 90.0);
    return std::copysign(std::abs(azimuth_deg) - 2.0 * beyond_deg, azimuth_deg);
}

// Stereo of MegaBass sends each channel to its own ear alone: there is no direction to measure.
bool hasDirections(const Layout& layout, const SurroundType& type) {
    return layout.channels > 2 || type.type == 1;
}

struct Row {
    const Layout* layout;
    const Loudspeaker* loudspeaker;
    std::vector<std::optional<LateralAngle>> angles;  // one for each type
};

std::vector<Row> measuredRows() {
    std::vector<Row> rows;
    for (const Layout& layout : layouts()) {
        for (const Loudspeaker& loudspeaker : layout.loudspeakers) {
            Row& row = rows.emplace_back(Row{&layout, &loudspeaker, {}});
            for (const SurroundType& type : kSurroundTypes) {
                row.angles.emplace_back();
                if (hasDirections(layout, type))
                    row.angles.back() = heardAngle(layout, loudspeaker.channel, type);
            }
        }
    }
    return rows;
}

using Cell = std::string (*)(const LateralAngle& angle);

std::string angleAndClarity(const LateralAngle& angle) {
    std::array<char, 32> cell{};
    (void)std::snprintf(cell.data(), cell.size(), "%.0f (%.2f)", angle.angle_deg, angle.clarity);
    return cell.data();
}

std::string delayAndLevel(const LateralAngle& angle) {
    std::array<char, 32> cell{};
    (void)std::snprintf(cell.data(), cell.size(), "%.0f, %.0f", angle.by_delay_deg, leastByLevel_deg(angle));
    return cell.data();
}

void print(const std::vector<Row>& rows, Cell cell) {
    printTableHead("layout | loudspeaker | azimuth");
    for (const Row& row : rows) {
        std::printf("| %s | %s | %.0f |", row.layout->name, row.loudspeaker->name,
                    row.loudspeaker->azimuth_deg);
        for (const auto& angle : row.angles) std::printf(" %s |", angle ? cell(*angle).c_str() : "-");
        std::puts("");
    }
}

Figure figureOf71(const std::vector<Row>& rows) {
    Figure figure;
    figure.title = "How far to the side the loudspeakers of 7.1 are heard";
    figure.x = sonivex_plotting::linearAxis(-150, 150, 30,
                                            "azimuth of the loudspeaker (degrees, positive to the left)");
    figure.panels.resize(3);
    figure.panels[0].y =
        sonivex_plotting::linearAxis(-90, 90, 30, "angle to the middle plane, by delay and level (degrees)");
    figure.panels[1].y =
        sonivex_plotting::linearAxis(-90, 90, 30, "the least angle that fits the levels alone (degrees)");
    figure.panels[2].y =
        sonivex_plotting::linearAxis(0, 1, 0.2, "clarity: correlation of the ears below 1.5 kHz");
    for (const SurroundType& type : kSurroundTypes) figure.names.emplace_back(type.name);
    figure.names.emplace_back("where the loudspeaker stands, in the open");
    for (Panel& panel : figure.panels) panel.curves.resize(figure.names.size());
    for (const Row& row : rows) {
        if (row.layout->channels != 8) continue;
        figure.x_values.push_back(row.loudspeaker->azimuth_deg);
        for (std::size_t i = 0; i < row.angles.size(); ++i) {
            figure.panels[0].curves[i].push_back(row.angles[i].value().angle_deg);
            figure.panels[1].curves[i].push_back(leastByLevel_deg(row.angles[i].value()));
            figure.panels[2].curves[i].push_back(row.angles[i].value().clarity);
        }
        const double lateral_deg = lateralOf_deg(row.loudspeaker->azimuth_deg);
        figure.panels[0].curves.back().push_back(lateral_deg);
        figure.panels[1].curves.back().push_back(lateral_deg);
        figure.panels[2].curves.back().push_back(1.0);
    }
    return figure;
}

}  // namespace

Figure measureAngles() {
    const std::vector<Row> rows = measuredRows();
    print(rows, angleAndClarity);
    print(rows, delayAndLevel);
    return figureOf71(rows);
}

}  // namespace study
