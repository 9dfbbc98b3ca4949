#include "element_canvas.h"

#include <cairo.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <new>
#include <utility>

#include "axis.h"
#include "base64.h"
#include "drawing_library.h"

namespace sonivex_plotting {
namespace {

constexpr std::array<std::pair<Colour, const char*>, 12> kVariables{{{kWhite, "paper"},
                                                                     {kInk, "ink"},
                                                                     {kGrid, "grid"},
                                                                     {kFrame, "frame"},
                                                                     {kGrey, "grey"},
                                                                     {kBlue, "blue"},
                                                                     {kSkyBlue, "sky-blue"},
                                                                     {kGreen, "green"},
                                                                     {kOrange, "orange"},
                                                                     {kVermillion, "vermillion"},
                                                                     {kPurple, "purple"},
                                                                     {kYellow, "yellow"}}};
constexpr int kDecimals = 1;  // of pixels
constexpr double kMarkerRadius = 4.5;
constexpr char kDash[] = "5";

std::string hexOf(const Colour& colour) {
    const auto byte = [](double part) {
        return static_cast<unsigned>(std::lround(255.0 * std::clamp(part, 0.0, 1.0)));
    };
    std::array<char, 8> text{};
    (void)std::snprintf(text.data(), text.size(), "#%02x%02x%02x", byte(colour.red), byte(colour.green),
                        byte(colour.blue));
    return text.data();
}

std::string css(const Colour& colour) {
    const auto* known = std::find_if(kVariables.begin(), kVariables.end(),
                                     [&](const auto& entry) { return entry.first == colour; });
    if (known == kVariables.end()) return hexOf(colour);
    return std::string("var(--plot-") + known->second + "," + hexOf(colour) + ")";
}

// Returns a number of pixels, as short as it can be.
std::string number(double value) {
    std::string text = fixed(value, kDecimals);
    if (text.size() > 2 && text.compare(text.size() - 2, 2, ".0") == 0) text.resize(text.size() - 2);
    return text;
}

std::string attribute(const char* name, double value) {
    return std::string(" ") + name + "=\"" + number(value) + "\"";
}

std::string boxAttributes(const Box& box) {
    return attribute("x", box.left) + attribute("y", box.top) + attribute("width", box.width) +
           attribute("height", box.height);
}

std::string strokeStyle(const Stroke& stroke) {
    std::string style = " style=\"fill:none;stroke:" + css(stroke.colour) +
                        ";stroke-width:" + number(stroke.width) + ";stroke-linejoin:round";
    if (stroke.is_dashed) style += std::string(";stroke-dasharray:") + kDash;
    return style + "\"";
}

std::string fillStyle(const Colour& colour) {
    return " style=\"fill:" + css(colour) + "\"";
}

std::string points(std::span<const Spot> spots) {
    std::string text = " points=\"";
    for (const Spot& spot : spots) {
        if (text.back() != '"') text += ' ';
        text.append(number(spot.x)).append(",").append(number(spot.y));
    }
    return text + "\"";
}

// An element of its own that shows only a part needs no identifier, which would have to differ from those of
// all other pictures of the page.
std::string clipped(const std::string& element, const Box& clip) {
    return "<svg" + boxAttributes(clip) + " viewBox=\"" + number(clip.left) + " " + number(clip.top) + " " +
           number(clip.width) + " " + number(clip.height) + "\">" + element + "</svg>\n";
}

const char* anchorName(Anchor anchor) {
    switch (anchor) {
        case Anchor::Start:
            return "start";
        case Anchor::Middle:
            return "middle";
        case Anchor::End:
            break;
    }
    return "end";
}

}  // namespace

/** Measures words with the drawing library. */
class ElementCanvas::Ruler {
  public:
    Ruler()
        : surface_(cairo_image_surface_create(CAIRO_FORMAT_A8, 1, 1)),
          context_(cairo_create(surface_.get())) {
        throwIfFailed(cairo_status(context_.get()));
    }

    double width(const std::string& words, double text_size) {
        CairoCanvas canvas(context_.get());
        canvas.setTextSize(text_size);
        const double measured = canvas.textWidth(words);
        // A context that has failed draws and measures nothing more.
        throwIfFailed(cairo_status(context_.get()));
        return measured;
    }

  private:
    Surface surface_;
    DrawingContext context_;
};

ElementCanvas::ElementCanvas() : ruler_(std::make_unique<Ruler>()) {}

ElementCanvas::~ElementCanvas() = default;

void ElementCanvas::setTextSize(double size) {
    text_size_ = size;
}

double ElementCanvas::textWidth(const std::string& words) const {
    return ruler_->width(words, text_size_);
}

void ElementCanvas::text(const std::string& words, const Spot& spot, Anchor anchor, const Colour& colour) {
    if (words.empty()) return;
    elements_ += "<text" + attribute("x", spot.x) + attribute("y", spot.y) +
                 attribute("font-size", text_size_) + " text-anchor=\"" + anchorName(anchor) + "\"" +
                 fillStyle(colour) + ">" + escapedText(words) + "</text>\n";
}

void ElementCanvas::textUpwards(const std::string& words, const Spot& spot) {
    if (words.empty()) return;
    elements_ += "<g transform=\"translate(" + number(spot.x) + " " + number(spot.y) + ") rotate(-90)\">";
    text(words, {0.0, 0.0}, Anchor::Middle, kInk);
    elements_ += "</g>\n";
}

void ElementCanvas::line(const Spot& from, const Spot& to, const Stroke& stroke) {
    elements_ += "<line" + attribute("x1", from.x) + attribute("y1", from.y) + attribute("x2", to.x) +
                 attribute("y2", to.y) + strokeStyle(stroke) + "/>\n";
}

void ElementCanvas::polyline(std::span<const Spot> spots, const Stroke& stroke, const Box& clip) {
    if (spots.empty()) return;
    elements_ += clipped("<polyline" + points(spots) + strokeStyle(stroke) + "/>", clip);
}

void ElementCanvas::area(std::span<const Spot> spots, const Colour& colour, const Box& clip) {
    if (spots.empty()) return;
    elements_ += clipped("<polygon" + points(spots) + fillStyle(colour) + "/>", clip);
}

void ElementCanvas::outline(const Box& box, const Stroke& stroke) {
    elements_ += "<rect" + boxAttributes(box) + strokeStyle(stroke) + "/>\n";
}

void ElementCanvas::fill(const Box& box, const Colour& colour) {
    elements_ += "<rect" + boxAttributes(box) + fillStyle(colour) + "/>\n";
}

void ElementCanvas::marker(Marker shape, const Spot& spot, const Colour& colour) {
    constexpr double kHalf = kMarkerRadius;
    switch (shape) {
        case Marker::Dot:
            elements_ += "<circle" + attribute("cx", spot.x) + attribute("cy", spot.y) +
                         attribute("r", kHalf) + fillStyle(colour) + "/>\n";
            break;
        case Marker::Square:
            fill({spot.x - kHalf, spot.y - kHalf, 2.0 * kHalf, 2.0 * kHalf}, colour);
            break;
        case Marker::Triangle: {
            const std::array<Spot, 3> corners{{{spot.x, spot.y - 1.2 * kHalf},
                                               {spot.x + 1.2 * kHalf, spot.y + kHalf},
                                               {spot.x - 1.2 * kHalf, spot.y + kHalf}}};
            elements_ += "<polygon" + points(corners) + fillStyle(colour) + "/>\n";
            break;
        }
    }
}

void ElementCanvas::image(const GreyImage& image, const Box& box) {
    if (image.values.empty()) return;
    elements_ +=
        "<image" + boxAttributes(box) +
        " preserveAspectRatio=\"none\" style=\"filter:var(--plot-heat)\" href=\"data:image/png;base64," +
        base64(greyPng(image)) + "\"/>\n";
}

std::string heatFilter(const std::string& id, const HeatMap& map) {
    const auto table = [&](const char* channel, double Colour::*part) {
        std::string values;
        for (const Colour& colour : map) values += (values.empty() ? "" : " ") + fixed(colour.*part, 2);
        return std::string("<feFunc") + channel + " type=\"table\" tableValues=\"" + values + "\"/>";
    };
    return "<filter id=\"" + id + "\" color-interpolation-filters=\"sRGB\"><feComponentTransfer>" +
           table("R", &Colour::red) + table("G", &Colour::green) + table("B", &Colour::blue) +
           "</feComponentTransfer></filter>";
}

std::string escapedText(const std::string& words) {
    std::string text;
    for (const char letter : words) {
        switch (letter) {
            case '&':
                text += "&amp;";
                break;
            case '<':
                text += "&lt;";
                break;
            case '>':
                text += "&gt;";
                break;
            case '"':
                text += "&quot;";
                break;
            case '\'':
                text += "&#39;";
                break;
            default: {
                const auto byte = static_cast<unsigned char>(letter);
                const bool is_control = (byte < 0x20 && letter != '\t' && letter != '\n') || byte == 0x7f;
                if (is_control) {
                    text += "\xEF\xBF\xBD";
                } else {
                    text += letter;
                }
            }
        }
    }
    return text;
}

}  // namespace sonivex_plotting
