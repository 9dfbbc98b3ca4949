#include "report_pictures.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "element_canvas.h"
#include "tools/sonivex/audio_samples.h"

namespace {

using sonivex_plotting::Anchor;
using sonivex_plotting::Colour;
using sonivex_plotting::ElementCanvas;
using sonivex_plotting::Spot;
using sonivex_tool::MeasuredReport;
using sonivex_tool::MeasuredVersion;
using sonivex_tool::picturesOf;

// Remembers how far the words that lie flat reach to both sides.
class WordsCanvas : public ElementCanvas {
  public:
    void text(const std::string& words, const Spot& spot, Anchor anchor, const Colour& colour) override {
        const double width = textWidth(words);
        const double start = anchor == Anchor::Start    ? spot.x
                             : anchor == Anchor::Middle ? spot.x - width / 2.0
                                                        : spot.x - width;
        leftmost = std::min(leftmost, start);
        rightmost = std::max(rightmost, start + width);
        ++count;
        ElementCanvas::text(words, spot, anchor, colour);
    }

    // Its spot is in a turned picture.
    void textUpwards(const std::string& /*words*/, const Spot& /*spot*/) override {}

    double leftmost = 1e9;
    double rightmost = -1e9;
    int count = 0;
};

MeasuredReport reportOfLength(std::int64_t seconds) {
    MeasuredReport report;
    MeasuredVersion& original = report.versions.emplace_back();
    original.title = original.file_name = "original";
    original.spec = test::floatSpec(2);
    original.frames = seconds * original.spec.rate_hz;
    return report;
}

// The label of the end stands below the corner, and half of it reaches beyond the axis.
TEST(ReportPictures, HaveRoomForTheLabelOfTheEnd) {
    for (const int seconds : {1, 60, 600, 3600, 36000}) {
        SCOPED_TRACE(std::to_string(seconds) + " s");
        const MeasuredReport report = reportOfLength(seconds);
        int words = 0;
        for (const auto& group : picturesOf(report)) {
            for (const auto& picture : group.pictures) {
                SCOPED_TRACE(picture.name);
                WordsCanvas canvas;
                picture.draw(canvas);
                words += canvas.count;
                EXPECT_GE(canvas.leftmost, 0.0);
                EXPECT_LE(canvas.rightmost, picture.width);
            }
        }
        EXPECT_GT(words, 20);
    }
}

}  // namespace
