#include "report_pictures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "element_canvas.h"
#include "responses_tables.h"
#include "tools/sonivex/audio_samples.h"

namespace {

using sonivex_plotting::Anchor;
using sonivex_plotting::Colour;
using sonivex_plotting::ElementCanvas;
using sonivex_plotting::Spot;
using sonivex_tool::MeasuredReport;
using sonivex_tool::MeasuredVersion;
using sonivex_tool::picturesOf;

// Remembers how far the words reach to both sides. Words that stand upright are left out, because their spot
// lies in a turned picture.
class WordsCanvas : public ElementCanvas {
  public:
    void text(const std::string& words, const Spot& spot, Anchor anchor, const Colour& colour) override {
        if (words.empty()) return;
        const double width = textWidth(words);
        const double start = anchor == Anchor::Start    ? spot.x
                             : anchor == Anchor::Middle ? spot.x - width / 2.0
                                                        : spot.x - width;
        leftmost = std::min(leftmost, start);
        rightmost = std::max(rightmost, start + width);
        ++count;
        ElementCanvas::text(words, spot, anchor, colour);
    }

    void textUpwards(const std::string& /*words*/, const Spot& /*spot*/) override {}

    double leftmost = 1e9;
    double rightmost = -1e9;
    int count = 0;
};

MeasuredReport reportOfLength(std::int64_t seconds) {
    MeasuredReport report;
    for (const std::string title :
         {"original", "dialogue (voice 3), normalizer", "surround (MegaBass, mode 3, no limiter)"}) {
        MeasuredVersion& version = report.versions.emplace_back();
        version.title = version.file_name = title;
        version.spec = test::floatSpec(2);
        version.frames = seconds * version.spec.rate_hz;
    }
    report.versions[1].presence = {{0.5, 0.5}};
    report.versions[2].responses = sonivex_tool::measureSets(
        {.sets = {sonivex_tool::findResponseSet("2.0-mode3")}, .source = std::nullopt});
    return report;
}

// The label of the end stands below the corner, and half of it reaches beyond the axis.
TEST(ReportPictures, HaveRoomForTheLabelOfTheEnd) {
    for (const int seconds : {1, 60, 600, 3600, 36000}) {
        SCOPED_TRACE(std::to_string(seconds) + " s");
        const MeasuredReport report = reportOfLength(seconds);
        std::set<std::string> groups;
        for (const auto& group : picturesOf(report)) {
            groups.insert(group.id);
            for (const auto& picture : group.pictures) {
                SCOPED_TRACE(picture.name);
                WordsCanvas canvas;
                picture.draw(canvas);
                EXPECT_GT(canvas.count, 5);
                EXPECT_GE(canvas.leftmost, 0.0);
                EXPECT_LE(canvas.rightmost, picture.width);
            }
        }
        EXPECT_EQ(groups, (std::set<std::string>{"waveforms", "spectrograms", "loudness", "changes",
                                                 "presence", "responses"}));
    }
}

}  // namespace
