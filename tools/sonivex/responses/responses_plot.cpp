#include "responses_plot.h"

#include <cairo.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "failure.h"
#include "responses_measures.h"

namespace sonivex_tool {
namespace {

struct Colour {
    double red, green, blue;
};
constexpr Colour kInk{0.13, 0.13, 0.15};
constexpr Colour kGrid{0.87, 0.87, 0.89};
constexpr Colour kZero{0.60, 0.60, 0.64};
// These two are distinguishable for colour-blind readers (Okabe & Ito 2008).
constexpr std::array<Colour, 2> kEarColours{Colour{0.00, 0.45, 0.70}, Colour{0.90, 0.45, 0.00}};

constexpr double kLeftMargin = 95.0;
constexpr double kRightMargin = 30.0;
constexpr double kFirstPanelTop = 115.0;
constexpr double kPanelHeight = 310.0;
constexpr double kPanelPitch = 415.0;
constexpr double kTitleSize = 26.0;
constexpr double kTextSize = 18.0;
constexpr double kImpulseShown_ms = 30.0;
constexpr double kMagnitudeShown_db = 60.0;
constexpr double kDecayShown_db = 70.0;

struct CairoDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
    void operator()(cairo_t* context) const { cairo_destroy(context); }
};

struct Tick {
    double value;
    std::string label;
};

struct Axis {
    double low, high;
    bool is_logarithmic = false;
    std::string label;
    std::vector<Tick> ticks;
    std::vector<double> minor_ticks = {};

    // Returns 0 at the low end of the axis and 1 at the high end.
    double place(double value) const {
        if (is_logarithmic) return std::log(value / low) / std::log(high / low);
        return (value - low) / (high - low);
    }
};

struct Point {
    double x, y;
};
using Curve = std::vector<Point>;

std::string number(double value, int decimals = 0) {
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
    return text.data();
}

// Returns 1, 2 or 5 times a power of ten, chosen so that about `count` steps fit into the range.
double niceStep(double range, double count) {
    const double rough = range / count;
    const double power = std::pow(10.0, std::floor(std::log10(rough)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= rough) return factor * power;
    }
    return 10.0 * power;
}

// Makes a linear axis with a tick at each multiple of `step`.
Axis linearAxis(double low, double high, double step, const std::string& label) {
    const int decimals = std::max(0, static_cast<int>(std::ceil(-std::log10(step) - 1e-9)));
    Axis axis{.low = low, .high = high, .label = label, .ticks = {}};
    const auto first = std::lround(std::ceil(low / step - 1e-9));
    const auto last = std::lround(std::floor(high / step + 1e-9));
    for (long i = first; i <= last; ++i) {
        const double value = static_cast<double>(i) * step;
        axis.ticks.push_back({value, number(value, decimals)});
    }
    return axis;
}

Axis frequencyAxis() {
    Axis axis{.low = 20.0, .high = 20000.0, .is_logarithmic = true, .label = "frequency (Hz)", .ticks = {}};
    axis.ticks = {{20.0, "20"},   {50.0, "50"},   {100.0, "100"}, {200.0, "200"},   {500.0, "500"},
                  {1000.0, "1k"}, {2000.0, "2k"}, {5000.0, "5k"}, {10000.0, "10k"}, {20000.0, "20k"}};
    for (const double decade : {10.0, 100.0, 1000.0, 10000.0}) {
        for (int i = 1; i < 10; ++i) {
            const double value = decade * i;
            if (value > axis.low && value < axis.high) axis.minor_ticks.push_back(value);
        }
    }
    return axis;
}

// One panel of the picture: a titled grid with two axes, into which curves are drawn.
class Panel {
  public:
    Panel(cairo_t* context, int number, const std::string& title, Axis x, Axis y)
        : context_(context), top_(kFirstPanelTop + number * kPanelPitch), x_(std::move(x)), y_(std::move(y)) {
        drawGrid();
        text(title, kLeftMargin, top_ - 12.0, 0.0);
        text(x_.label, kLeftMargin + kWidth / 2.0, top_ + kPanelHeight + 52.0, 0.5);
        cairo_save(context_);
        cairo_translate(context_, 28.0, top_ + kPanelHeight / 2.0);
        cairo_rotate(context_, -std::acos(0.0));
        text(y_.label, 0.0, 0.0, 0.5);
        cairo_restore(context_);
    }

    void draw(const Curve& curve, const Colour& colour) {
        cairo_save(context_);
        cairo_rectangle(context_, kLeftMargin, top_, kWidth, kPanelHeight);
        cairo_clip(context_);
        for (const Point& point : curve) cairo_line_to(context_, across(point.x), down(point.y));
        stroke(colour, 1.8);
        cairo_restore(context_);
    }

  private:
    static constexpr double kWidth = kPlotWidth - kLeftMargin - kRightMargin;

    double across(double x) const { return kLeftMargin + kWidth * x_.place(x); }
    double down(double y) const { return top_ + kPanelHeight * (1.0 - y_.place(y)); }

    void stroke(const Colour& colour, double width) {
        cairo_set_source_rgb(context_, colour.red, colour.green, colour.blue);
        cairo_set_line_width(context_, width);
        cairo_set_line_join(context_, CAIRO_LINE_JOIN_ROUND);
        cairo_stroke(context_);
    }

    // `anchor` is the share of the text's width that lies left of x.
    void text(const std::string& words, double x, double y, double anchor) {
        cairo_text_extents_t extents;
        cairo_text_extents(context_, words.c_str(), &extents);
        cairo_set_source_rgb(context_, kInk.red, kInk.green, kInk.blue);
        cairo_move_to(context_, x - anchor * extents.x_advance, y);
        cairo_show_text(context_, words.c_str());
    }

    void verticalLine(double value, const Colour& colour) {
        cairo_move_to(context_, across(value), top_);
        cairo_line_to(context_, across(value), top_ + kPanelHeight);
        stroke(colour, 1.0);
    }

    void drawGrid() {
        for (const double value : x_.minor_ticks) verticalLine(value, kGrid);
        for (const Tick& tick : x_.ticks) {
            verticalLine(tick.value, kGrid);
            text(tick.label, across(tick.value), top_ + kPanelHeight + 25.0, 0.5);
        }
        for (const Tick& tick : y_.ticks) {
            cairo_move_to(context_, kLeftMargin, down(tick.value));
            cairo_line_to(context_, kLeftMargin + kWidth, down(tick.value));
            stroke(tick.value == 0.0 ? kZero : kGrid, 1.0);
            text(tick.label, kLeftMargin - 10.0, down(tick.value) + 6.0, 1.0);
        }
        cairo_rectangle(context_, kLeftMargin, top_, kWidth, kPanelHeight);
        stroke(kZero, 1.2);
    }

    cairo_t* context_;
    double top_;
    Axis x_;
    Axis y_;
};

using Ears = std::array<std::vector<double>, 2>;

void drawHeading(cairo_t* context, const ResponseSet& set, int source, const ResponseSource& tables) {
    cairo_set_source_rgb(context, kInk.red, kInk.green, kInk.blue);
    cairo_set_font_size(context, kTitleSize);
    cairo_move_to(context, kLeftMargin, 42.0);
    cairo_show_text(context,
                    (set.name + ", source " + std::to_string(source) + " (" + set.use + ")").c_str());
    cairo_set_font_size(context, kTextSize);
    double x = kPlotWidth - kRightMargin - 330.0;
    const bool is_shared = isSharedByBothEars(tables);
    for (std::size_t ear = 0; ear < (is_shared ? 1 : 2); ++ear) {
        const Colour& colour = kEarColours.at(ear);
        cairo_set_source_rgb(context, colour.red, colour.green, colour.blue);
        cairo_set_line_width(context, 4.0);
        const double y = 30.0 + 26.0 * static_cast<double>(ear);
        cairo_move_to(context, x, y);
        cairo_line_to(context, x + 40.0, y);
        cairo_stroke(context);
        const ResponseTable& table = ear == 0 ? tables.left : tables.right;
        const char* const whose = is_shared ? "both ears: " : ear == 0 ? "left ear: " : "right ear: ";
        cairo_set_source_rgb(context, kInk.red, kInk.green, kInk.blue);
        cairo_move_to(context, x + 52.0, y + 6.0);
        cairo_show_text(context, (whose + table.name).c_str());
    }
}

void drawImpulses(cairo_t* context, const Ears& ears, int rate_hz) {
    std::array<Curve, 2> curves;
    double highest = 1e-6;
    double lowest = 0.0;
    for (std::size_t ear = 0; ear < 2; ++ear) {
        for (std::size_t n = 0; n < ears.at(ear).size(); ++n) {
            const double time_ms = static_cast<double>(n) / rate_hz * 1000.0;
            if (time_ms > kImpulseShown_ms) break;
            curves.at(ear).push_back({time_ms, ears.at(ear)[n]});
            highest = std::max(highest, ears.at(ear)[n]);
            lowest = std::min(lowest, ears.at(ear)[n]);
        }
    }
    const double step = niceStep(highest - lowest, 6.0);
    Panel panel(context, 0, "Impulse response, first " + number(kImpulseShown_ms) + " ms",
                linearAxis(0.0, kImpulseShown_ms, 5.0, "time (ms)"),
                linearAxis(step * std::floor(lowest / step), step * std::ceil(highest / step), step, "gain"));
    for (std::size_t ear = 2; ear-- > 0;) panel.draw(curves.at(ear), kEarColours.at(ear));
}

void drawMagnitudes(cairo_t* context, const Ears& ears, int rate_hz) {
    std::array<Curve, 2> curves;
    double highest_db = -1000.0;
    double lowest_db = 1000.0;
    for (std::size_t ear = 0; ear < 2; ++ear) {
        for (const SpectrumPoint& point : magnitude(ears.at(ear), rate_hz)) {
            curves.at(ear).push_back({point.frequency_hz, point.gain_db});
            highest_db = std::max(highest_db, point.gain_db);
            lowest_db = std::min(lowest_db, point.gain_db);
        }
    }
    const double top_db = 10.0 * std::ceil(highest_db / 10.0);
    const double bottom_db =
        std::clamp(10.0 * std::floor(lowest_db / 10.0), top_db - kMagnitudeShown_db, top_db - 10.0);
    Panel panel(context, 1, "Magnitude, averaged over 1/12 octave", frequencyAxis(),
                linearAxis(bottom_db, top_db, (top_db - bottom_db) > 30.0 ? 10.0 : 5.0, "gain (dB)"));
    for (std::size_t ear = 2; ear-- > 0;) panel.draw(curves.at(ear), kEarColours.at(ear));
}

void drawDecays(cairo_t* context, const Ears& ears, const ResponseSet& set) {
    std::array<Curve, 2> curves;
    std::string title = "Energy decay (Schroeder integral)";
    double length_ms = 0.0;
    for (std::size_t ear = 0; ear < 2; ++ear) {
        const std::vector<double> decay = energyDecay_db(ears.at(ear));
        for (std::size_t n = 0; n < decay.size(); ++n) {
            curves.at(ear).push_back({static_cast<double>(n) / set.format.rate_hz * 1000.0, decay[n]});
        }
        length_ms =
            std::max(length_ms, static_cast<double>(ears.at(ear).size()) / set.format.rate_hz * 1000.0);
        const auto time_s =
            measureResponse(ears.at(ear), set.format.rate_hz, set.format.faded_part).reverberation_s;
        title += ear == 0 ? "; reverberation time left " : ", right ";
        title += time_s ? number(*time_s, 3) + " s" : "none";
    }
    Panel panel(context, 2, title, linearAxis(0.0, length_ms, niceStep(length_ms, 8.0), "time (ms)"),
                linearAxis(-kDecayShown_db, 0.0, 10.0, "energy (dB)"));
    for (std::size_t ear = 2; ear-- > 0;) panel.draw(curves.at(ear), kEarColours.at(ear));
}

void writePng(cairo_surface_t* surface, const std::string& path) {
    const std::string temporary = path + "." + std::to_string(getpid()) + ".part";
    errno = 0;
    const cairo_status_t status = cairo_surface_write_to_png(surface, temporary.c_str());
    if (status == CAIRO_STATUS_NO_MEMORY) {
        (void)std::remove(temporary.c_str());
        throw std::bad_alloc();
    }
    if (status == CAIRO_STATUS_SUCCESS && std::rename(temporary.c_str(), path.c_str()) == 0) return;
    const int error = errno;
    (void)std::remove(temporary.c_str());
    throw Failure(error == ENOSPC || error == EDQUOT || error == EFBIG ? ExitCode::NoSpace
                                                                       : ExitCode::OutputNotWritable,
                  "cannot write \"" + path +
                      "\": " + (error != 0 ? std::strerror(error) : cairo_status_to_string(status)));
}

}  // namespace

void plotResponses(const ResponseSet& set, int source, const std::string& path) {
    const ResponseSource& tables = set.sources.at(static_cast<std::size_t>(source) - 1);
    const Ears ears = {gainsOf(tables.left, set), gainsOf(tables.right, set)};
    const std::unique_ptr<cairo_surface_t, CairoDeleter> surface(
        cairo_image_surface_create(CAIRO_FORMAT_RGB24, kPlotWidth, kPlotHeight));
    const std::unique_ptr<cairo_t, CairoDeleter> context(cairo_create(surface.get()));
    cairo_set_source_rgb(context.get(), 1.0, 1.0, 1.0);
    cairo_paint(context.get());
    cairo_select_font_face(context.get(), "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    drawHeading(context.get(), set, source, tables);
    drawImpulses(context.get(), ears, set.format.rate_hz);
    drawMagnitudes(context.get(), ears, set.format.rate_hz);
    drawDecays(context.get(), ears, set);
    if (cairo_status(context.get()) == CAIRO_STATUS_NO_MEMORY) throw std::bad_alloc();
    writePng(surface.get(), path);
}

}  // namespace sonivex_tool
