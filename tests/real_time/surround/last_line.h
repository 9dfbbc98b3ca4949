#pragma once

#include <cstddef>
#include <cstdio>

#include "sonivex/log_bridge.h"

namespace test {

/** Replaces the log writer for its lifetime and stores the last line, without allocating. */
class LastLine {
  public:
    LastLine() : previous_(logWriterFun) {
        text()[0] = '\0';
        logWriterFun = [](const char* line, int) { std::snprintf(text(), kBytes, "%s", line); };
    }
    ~LastLine() { logWriterFun = previous_; }
    LastLine(const LastLine&) = delete;
    LastLine& operator=(const LastLine&) = delete;

    static char* text() {
        static char text[kBytes];
        return text;
    }

  private:
    static constexpr std::size_t kBytes = 512;
    void (*previous_)(const char*, int);
};

}  // namespace test
