// Draws the cost of each job as a bar, divided into the shares of its parts.
//
//   cost_plot TITLE FILE.png < "job,total,part,percent" lines
//
// Jobs and parts appear in the order of the lines. `profile-filter` prints such lines.
#include <algorithm>
#include <array>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include "axis.h"
#include "png_file.h"

namespace {

using sonivex_plotting::Anchor;
using sonivex_plotting::Canvas;
using sonivex_plotting::Colour;

constexpr std::array<Colour, 8> kParts{sonivex_plotting::kSkyBlue, sonivex_plotting::kOrange,
                                       sonivex_plotting::kGreen,   sonivex_plotting::kBlue,
                                       sonivex_plotting::kYellow,  sonivex_plotting::kVermillion,
                                       sonivex_plotting::kPurple,  sonivex_plotting::kGrey};

constexpr int kWidth = 900;
constexpr double kLeft = 30.0;
constexpr double kBarWidth = kWidth - 2 * kLeft;
constexpr double kBarHeight = 56.0;
constexpr double kBarPitch = 110.0;
constexpr double kLegendLine = 26.0;
constexpr double kTitleSize = 20.0;
constexpr double kTextSize = 16.0;
constexpr double kNarrowestLabelled_percent = 4.0;

struct Job {
    std::string name;
    std::string total;
    std::vector<double> percent;  // one per part, in the order of Costs::parts
};

struct Costs {
    std::vector<std::string> parts;
    std::vector<Job> jobs;
};

// @return true if there is at least one line, every line is valid and there is a colour for every part.
bool readCosts(std::istream& lines, Costs& costs) {
    for (std::string line; std::getline(lines, line);) {
        std::istringstream fields(line);
        std::string name;
        std::string total;
        std::string part;
        double percent = 0;
        std::getline(fields, name, ',');
        std::getline(fields, total, ',');
        std::getline(fields, part, ',');
        if (!(fields >> percent) || !(percent >= 0.0) || percent > 100.0) return false;
        if (costs.jobs.empty() || costs.jobs.back().name != name) costs.jobs.push_back({name, total, {}});
        auto place = std::find(costs.parts.begin(), costs.parts.end(), part);
        const auto index = static_cast<std::size_t>(place - costs.parts.begin());
        if (place == costs.parts.end()) costs.parts.push_back(part);
        std::vector<double>& values = costs.jobs.back().percent;
        values.resize(std::max(values.size(), index + 1));
        values[index] = percent;
    }
    return !costs.jobs.empty() && costs.parts.size() <= kParts.size();
}

void drawJob(Canvas& canvas, const Job& job, double top) {
    canvas.text(job.name, {kLeft, top - 10.0}, Anchor::Start);
    canvas.text(job.total, {kLeft + kBarWidth, top - 10.0}, Anchor::End);
    double x = kLeft;
    for (std::size_t part = 0; part < job.percent.size(); ++part) {
        const double width = kBarWidth * job.percent[part] / 100.0;
        canvas.fill({x, top, width, kBarHeight}, kParts.at(part));
        if (job.percent[part] >= kNarrowestLabelled_percent) {
            canvas.text(sonivex_plotting::fixed(job.percent[part], 0) + " %",
                        {x + width / 2.0, top + kBarHeight / 2.0 + 6.0}, Anchor::Middle);
        }
        x += width;
    }
}

bool draw(const std::string& title, const Costs& costs, const std::string& path) {
    const double legend = 62.0;
    const double bars = legend + kLegendLine * static_cast<double>((costs.parts.size() + 1) / 2) + 30.0;
    const double height = bars + kBarPitch * static_cast<double>(costs.jobs.size()) - 30.0;
    return study::writePng(kWidth, static_cast<int>(height), title, path, [&](Canvas& canvas) {
        canvas.setTextSize(kTitleSize);
        canvas.text(title, {kLeft, 36.0}, Anchor::Start);
        canvas.setTextSize(kTextSize);
        for (std::size_t part = 0; part < costs.parts.size(); ++part) {
            const double x = kLeft + (part % 2 == 0 ? 0.0 : kBarWidth / 2.0);
            const double y = legend + kLegendLine * static_cast<double>(part / 2);
            canvas.fill({x, y, 30.0, 16.0}, kParts.at(part));
            canvas.text(costs.parts[part], {x + 42.0, y + 14.0}, Anchor::Start);
        }
        for (std::size_t job = 0; job < costs.jobs.size(); ++job)
            drawJob(canvas, costs.jobs[job], bars + kBarPitch * static_cast<double>(job));
    });
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        (void)std::fprintf(stderr, "usage: %s TITLE FILE.png < \"job,total,part,percent\" lines\n", argv[0]);
        return 2;
    }
    Costs costs;
    if (!readCosts(std::cin, costs)) {
        (void)std::fprintf(stderr,
                           "cost_plot: cannot read costs from standard input: lines must be "
                           "\"job,total,part,percent\", percent 0 to 100, at most 8 parts\n");
        return 1;
    }
    return draw(argv[1], costs, argv[2]) ? 0 : 1;
}
