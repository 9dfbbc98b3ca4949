#pragma once

#include <functional>
#include <string>

#include "batch_report.h"
#include "batch_settings.h"
#include "console.h"

namespace sonivex_tool {

/** Renders many files, each in a process of its own, `settings.jobs` at once.
 *
 * A file that fails does not stop the others. After a signal no further file is begun, the running ones are
 * asked to end, and the report holds what is finished; the caller looks at `pendingSignal`.
 * @param on_result called with each file's result as it ends
 * @throw Failure for a batch that cannot begin or whose state cannot be kept, not for a file that fails */
BatchReport runBatch(const BatchSettings& settings, Console& console,
                     const std::function<void(const BatchResult&)>& on_result);

}  // namespace sonivex_tool
