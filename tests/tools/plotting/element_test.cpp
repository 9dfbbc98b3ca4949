// Pictures as elements of a page.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "base64.h"
#include "element_canvas.h"
#include "panel.h"
#include "picture.h"

namespace {

using sonivex_plotting::Anchor;
using sonivex_plotting::base64;
using sonivex_plotting::Canvas;
using sonivex_plotting::ElementCanvas;
using sonivex_plotting::escapedText;
using sonivex_plotting::GreyImage;
using sonivex_plotting::heatColour;
using sonivex_plotting::pictureElement;
using sonivex_plotting::Spot;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// RFC 4648, section 10.
TEST(Base64, HasTheValuesOfItsDefinition) {
    EXPECT_EQ(base64(""), "");
    EXPECT_EQ(base64("f"), "Zg==");
    EXPECT_EQ(base64("fo"), "Zm8=");
    EXPECT_EQ(base64("foo"), "Zm9v");
    EXPECT_EQ(base64("foob"), "Zm9vYg==");
    EXPECT_EQ(base64("foobar"), "Zm9vYmFy");
    EXPECT_EQ(base64(std::string("\xff\xfe\x00", 3)), "//4A");
}

TEST(TextOfElements, KeepsNothingThatAPageCouldTakeForMarkup) {
    EXPECT_EQ(escapedText("<b a=\"x\" c='y'>&"), "&lt;b a=&quot;x&quot; c=&#39;y&#39;&gt;&amp;");
    EXPECT_EQ(escapedText(std::string("a\0b\x1b\tc", 6)),
              "a\xEF\xBF\xBD"
              "b\xEF\xBF\xBD\tc");
    EXPECT_EQ(escapedText("Müller – 曲"), "Müller – 曲");
}

TEST(PictureElements, TakeTheirColoursFromThePage) {
    const std::string element = pictureElement(40, 30, "one & two", [](Canvas& canvas) {
        canvas.fill({1.0, 2.0, 3.24, 4.0}, sonivex_plotting::kBlue);
        canvas.line({0.0, 0.0}, {5.0, 5.0}, {{1.0, 0.5, 0.0}, 2.0, true});
    });
    EXPECT_THAT(
        element,
        StartsWith("<svg class=\"plot\" role=\"img\" viewBox=\"0 0 40 30\" aria-label=\"one &amp; two\""));
    EXPECT_THAT(element, HasSubstr("fill:var(--plot-blue,#0073b3)"));
    EXPECT_THAT(element, HasSubstr("x=\"1\" y=\"2\" width=\"3.2\" height=\"4\""));
    EXPECT_THAT(element, HasSubstr("stroke:#ff8000;stroke-width:2"));
    EXPECT_THAT(element, HasSubstr("stroke-dasharray:5"));
}

TEST(PictureElements, HoldTheirWordsAsText) {
    const std::string element = pictureElement(100, 100, "d", [](Canvas& canvas) {
        canvas.text("<loud> & quiet", {5.0, 6.0}, Anchor::End);
    });
    EXPECT_THAT(element, HasSubstr("text-anchor=\"end\""));
    EXPECT_THAT(element, HasSubstr(">&lt;loud&gt; &amp; quiet</text>"));
}

TEST(PictureElements, ShowAnImageThroughThePagesFilter) {
    const GreyImage image{.width = 2, .height = 1, .values = {0, 255}};
    ElementCanvas canvas;
    canvas.image(image, {0.0, 0.0, 20.0, 10.0});
    EXPECT_THAT(canvas.elements(), HasSubstr("filter:var(--plot-heat)"));
    EXPECT_THAT(canvas.elements(), HasSubstr("data:image/png;base64,iVBORw0KGgo"));
    ElementCanvas empty;
    empty.image({}, {0.0, 0.0, 20.0, 10.0});
    EXPECT_EQ(empty.elements(), "");
}

TEST(PictureElements, ClipCurvesToTheirPanel) {
    const std::vector<Spot> spots{{-100.0, 5.0}, {100.0, 5.0}};
    ElementCanvas canvas;
    canvas.polyline(spots, {}, {10.0, 0.0, 20.0, 10.0});
    EXPECT_THAT(canvas.elements(),
                StartsWith("<svg x=\"10\" y=\"0\" width=\"20\" height=\"10\" viewBox=\"10 0 20 10\">"));
    ElementCanvas empty;
    empty.polyline({}, {}, {10.0, 0.0, 20.0, 10.0});
    EXPECT_EQ(empty.elements(), "");
}

TEST(PictureElements, ShowMarkersOfEachShapeAroundTheirSpot) {
    const auto drawn = [](sonivex_plotting::Marker shape) {
        ElementCanvas canvas;
        canvas.marker(shape, {20.0, 10.0}, {1.0, 0.5, 0.0});
        return canvas.elements();
    };
    using sonivex_plotting::Marker;
    EXPECT_EQ(drawn(Marker::Dot), "<circle cx=\"20\" cy=\"10\" r=\"4.5\" style=\"fill:#ff8000\"/>\n");
    EXPECT_EQ(drawn(Marker::Square),
              "<rect x=\"15.5\" y=\"5.5\" width=\"9\" height=\"9\" style=\"fill:#ff8000\"/>\n");
    EXPECT_EQ(drawn(Marker::Triangle),
              "<polygon points=\"20,4.6 25.4,14.5 14.6,14.5\" style=\"fill:#ff8000\"/>\n");
}

TEST(PictureElements, MeasureWordsAsTheFilesDo) {
    ElementCanvas canvas;
    canvas.setTextSize(10.0);
    const double width = canvas.textWidth("mmmm");
    EXPECT_GT(width, 20.0);
    canvas.setTextSize(20.0);
    EXPECT_NEAR(canvas.textWidth("mmmm"), 2.0 * width, 0.1 * width);
}

// The relative luminance of a heat map's colours must rise or fall all the way.
double lightness(const sonivex_plotting::Colour& colour) {
    return 0.2126 * colour.red + 0.7152 * colour.green + 0.0722 * colour.blue;
}

TEST(HeatMaps, KeepTheirOrderWithoutColour) {
    for (int step = 1; step <= 100; ++step) {
        const double before = (step - 1) / 100.0;
        const double after = step / 100.0;
        EXPECT_LT(lightness(heatColour(sonivex_plotting::kHeatInLight, after)),
                  lightness(heatColour(sonivex_plotting::kHeatInLight, before)))
            << step;
        EXPECT_GT(lightness(heatColour(sonivex_plotting::kHeatInDark, after)),
                  lightness(heatColour(sonivex_plotting::kHeatInDark, before)))
            << step;
    }
}

TEST(HeatMaps, BecomeAFilterWithTheSameColours) {
    const std::string filter = sonivex_plotting::heatFilter("heat", sonivex_plotting::kHeatInLight);
    EXPECT_THAT(filter, HasSubstr("id=\"heat\""));
    EXPECT_THAT(filter, HasSubstr("<feFuncR type=\"table\" tableValues=\"1.00 0.71 0.25 0.35 0.14\"/>"));
    EXPECT_THAT(filter, Not(HasSubstr("linearRGB")));
}

}  // namespace
