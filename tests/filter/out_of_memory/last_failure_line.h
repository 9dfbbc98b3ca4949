// The filter's log while memory fails.
#pragma once

#include <string>

#include "vorlin/log.h"

namespace test {

/** Keeps the last line that tells of a failure, without a request for memory. */
class LastFailureLine {
  public:
    LastFailureLine() {
        Vorlin::setLogSink([this](int level, const std::string&, const std::string& line) {
            // A graph that has nothing to give is no error of its own.
            const bool is_graph_empty = line.starts_with("sonivex av_buffersink_get_frame error");
            if (level > Vorlin::LOG_WARNING && !is_graph_empty) return;
            ++lines_;
            line.copy(text_, sizeof text_ - 1);
        });
        Vorlin::setLogLevel(Vorlin::LOG_DEBUG);
    }
    ~LastFailureLine() {
        Vorlin::setLogLevel(Vorlin::LOG_QUIET);
        Vorlin::setLogSink({});
    }
    LastFailureLine(const LastFailureLine&) = delete;
    LastFailureLine& operator=(const LastFailureLine&) = delete;
    int lines() const { return lines_; }
    const char* text() const { return text_; }

  private:
    int lines_ = 0;
    char text_[256] = {};
};

}  // namespace test
