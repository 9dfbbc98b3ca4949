#pragma once

#include <memory>

#include "console.h"
#include "render_report.h"
#include "render_settings.h"
#include "vorlin/plugin.h"

namespace sonivex_tool {

// Renders a file through the filter:
//
//   decode -> calls of call_frames -> filter -> remove the delay -> convert to the encoder's format -> encode
//
// After the last packet, silence drives out what the filter still holds. The output file appears only when it
// is complete.

/** Renders a file through the filter of `plugin` into another file.
 *  @throw Failure, std::bad_alloc; no file is left behind then */
RenderReport render(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                    Console& console);

}  // namespace sonivex_tool
