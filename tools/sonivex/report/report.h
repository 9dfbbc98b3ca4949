#pragma once

#include <memory>

#include "measured_report.h"

namespace sonivex_tool {

/** The result of the command. */
struct ReportResult {
    MeasuredReport report;
    std::size_t page_bytes = 0;              // 0 without a page
    std::vector<std::string> picture_paths;  // of the PNG files
};

/** Measures the versions and writes the page, the pictures, or both.
 *  @throw Failure, std::bad_alloc. A failure leaves no half-written page. The page is written before the
 *  pictures, which may be complete or missing */
ReportResult makeReport(const ReportSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                        Console& console);

}  // namespace sonivex_tool
