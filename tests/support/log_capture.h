// Collects the effects' log lines in place of the default writer while it lives. Only one may live at a time.
#pragma once

#include <string>
#include <vector>

#include "sonivex/log_bridge.h"

namespace test {

class LogCapture {
  public:
    LogCapture() : previous_(logWriterFun) {
        lines().clear();
        logWriterFun = [](const char* line, int length) {
            lines().emplace_back(line);
            lengths().push_back(length);
        };
        lengths().clear();
    }
    ~LogCapture() { logWriterFun = previous_; }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    static std::vector<std::string>& lines() {
        static std::vector<std::string> lines;
        return lines;
    }
    /** Lengths in bytes, as passed to the writer with each line. */
    static std::vector<int>& lengths() {
        static std::vector<int> lengths;
        return lengths;
    }

  private:
    void (*previous_)(const char*, int);
};

}  // namespace test
