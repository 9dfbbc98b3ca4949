// Draws the cost of each job as a bar, divided into the shares of its parts.
//
//   cost_plot TITLE FILE.png < "job,total,part,percent" lines
//
// Jobs and parts appear in the order of the lines. `profile-filter` prints such lines.
#include <cairo.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Colour {
    double red, green, blue;
};
constexpr Colour kInk{0.13, 0.13, 0.15};
// Palette that colour-blind viewers can tell apart (Okabe & Ito 2008), and a grey.
constexpr std::array<Colour, 8> kParts{
    Colour{0.34, 0.71, 0.91}, Colour{0.90, 0.62, 0.00}, Colour{0.00, 0.62, 0.45}, Colour{0.00, 0.45, 0.70},
    Colour{0.94, 0.89, 0.26}, Colour{0.84, 0.37, 0.00}, Colour{0.80, 0.47, 0.65}, Colour{0.70, 0.70, 0.72}};

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

struct CairoDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};

void box(cairo_t* context, const Colour& colour, double x, double y, double width, double height) {
    cairo_set_source_rgb(context, colour.red, colour.green, colour.blue);
    cairo_rectangle(context, x, y, width, height);
    cairo_fill(context);
}

// anchor: fraction of the text's width to the left of x (0: left-aligned, 1: right-aligned).
void text(cairo_t* context, const std::string& words, double x, double y, double anchor) {
    cairo_text_extents_t extents;
    cairo_text_extents(context, words.c_str(), &extents);
    cairo_set_source_rgb(context, kInk.red, kInk.green, kInk.blue);
    cairo_move_to(context, x - anchor * extents.x_advance, y);
    cairo_show_text(context, words.c_str());
}

void drawJob(cairo_t* context, const Job& job, double top) {
    text(context, job.name, kLeft, top - 10.0, 0.0);
    text(context, job.total, kLeft + kBarWidth, top - 10.0, 1.0);
    double x = kLeft;
    for (std::size_t part = 0; part < job.percent.size(); ++part) {
        const double width = kBarWidth * job.percent[part] / 100.0;
        box(context, kParts.at(part), x, top, width, kBarHeight);
        if (job.percent[part] >= kNarrowestLabelled_percent) {
            std::array<char, 16> label{};
            (void)std::snprintf(label.data(), label.size(), "%.0f %%", job.percent[part]);
            text(context, label.data(), x + width / 2.0, top + kBarHeight / 2.0 + 6.0, 0.5);
        }
        x += width;
    }
}

bool draw(const std::string& title, const Costs& costs, const std::string& path) {
    const double legend = 62.0;
    const double bars = legend + kLegendLine * static_cast<double>((costs.parts.size() + 1) / 2) + 30.0;
    const double height = bars + kBarPitch * static_cast<double>(costs.jobs.size()) - 30.0;
    const std::unique_ptr<cairo_surface_t, CairoDeleter> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, kWidth, static_cast<int>(height)));
    const std::unique_ptr<cairo_t, CairoDeleter> context(cairo_create(surface.get()));
    box(context.get(), {1.0, 1.0, 1.0}, 0.0, 0.0, kWidth, height);
    cairo_select_font_face(context.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(context.get(), kTitleSize);
    text(context.get(), title, kLeft, 36.0, 0.0);
    cairo_set_font_size(context.get(), kTextSize);
    for (std::size_t part = 0; part < costs.parts.size(); ++part) {
        const double x = kLeft + (part % 2 == 0 ? 0.0 : kBarWidth / 2.0);
        const double y = legend + kLegendLine * static_cast<double>(part / 2);
        box(context.get(), kParts.at(part), x, y, 30.0, 16.0);
        text(context.get(), costs.parts[part], x + 42.0, y + 14.0, 0.0);
    }
    for (std::size_t job = 0; job < costs.jobs.size(); ++job)
        drawJob(context.get(), costs.jobs[job], bars + kBarPitch * static_cast<double>(job));
    return cairo_surface_write_to_png(surface.get(), path.c_str()) == CAIRO_STATUS_SUCCESS;
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
