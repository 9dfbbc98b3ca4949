#pragma once

#include <map>
#include <string>

#include "measured_report.h"
#include "report_pictures.h"

namespace sonivex_tool {

/** Returns the report as one HTML page that needs no other file and no network. Every text that comes from
 *  the file is escaped. */
std::string pageOf(const MeasuredReport& report, const std::vector<PictureGroup>& pictures);

/** Returns a template with each `@NAME@` replaced by its text. Text that is put in is not searched again.
 *  @throw std::out_of_range for a name without a text */
std::string filled(std::string_view page_template, const std::map<std::string, std::string>& texts);

/** Returns JSON as it may stand in a script element: nothing in it ends the element. */
std::string jsonForScript(const std::string& json);

}  // namespace sonivex_tool
