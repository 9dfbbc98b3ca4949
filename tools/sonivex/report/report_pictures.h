#pragma once

#include <functional>
#include <string>
#include <vector>

#include "canvas.h"
#include "measured_report.h"

namespace sonivex_tool {

/** A picture of a report. It refers to the report, which must outlive it. */
struct ReportPicture {
    std::string name;         // of its file, without extension
    std::string title;        // heading
    std::string description;  // in words, for those who do not see it
    int width = 0;            // in pixels
    int height = 0;
    std::function<void(sonivex_plotting::Canvas&)> draw;
};

/** A heading of the page and the pictures below it. */
struct PictureGroup {
    std::string id;  // of the section
    std::string heading;
    std::string explanation;  // a sentence or two
    std::vector<ReportPicture> pictures;
};

/** Returns the pictures of a report: waveforms, spectrograms, loudness and true peaks of each version, the
 *  change of level by each, presence, and the magnitudes of surround's responses. Groups without pictures
 *  are left out. */
std::vector<PictureGroup> picturesOf(const MeasuredReport& report);

/** Returns the names of the pictures that every report of these versions has. Of the rest only measuring
 *  tells whether there are any.
 *  @param versions the file names of all versions */
std::vector<std::string> certainPictureNames(const std::vector<std::string>& versions);

}  // namespace sonivex_tool
