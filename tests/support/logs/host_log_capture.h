#pragma once

#include <optional>
#include <string>

#include "support/logs/log_capture.h"
#include "vorlin/log.h"

namespace test {

/** Collects the host's log lines in place of its sink, each as "level message" or "level tag: message". At
 *  its end it removes the sink and makes the log quiet. */
class HostLogCapture : public LogCapture {
  public:
    enum class Tags { kDropped, kKept };

    /** @param threshold most verbose level that is collected; nullopt leaves the log's threshold as it is */
    explicit HostLogCapture(Tags tags = Tags::kDropped, std::optional<int> threshold = Vorlin::LOG_DEBUG) {
        if (threshold) Vorlin::setLogLevel(*threshold);
        Vorlin::setLogSink(
            [tags, store = store()](int level, const std::string& tag, const std::string& message) {
                store->add(std::to_string(level) + " " + (tags == Tags::kKept ? tag + ": " : "") + message);
            });
    }
    ~HostLogCapture() {
        Vorlin::setLogLevel(Vorlin::LOG_QUIET);
        Vorlin::setLogSink({});
    }
};

}  // namespace test
