#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "key_reader.h"
#include "play.h"
#include "screen_lines.h"
#include "terminal.h"

namespace sonivex_tool {

/** Shows what is played and reads keys: on a screen if keys and output are a terminal, and otherwise with a
 *  plain line every five seconds. */
class PlayView {
  public:
    using Clock = std::chrono::steady_clock;

    /** @param result outlives this object */
    PlayView(const PlaySettings& settings, ResultStream& result);

    /** Waits a moment for keys.
     *  @return what they do; Quit if the terminal is gone */
    std::vector<PlayAction> waitForKeys();

    /** Tells the user of something that happened. */
    void note(double position_s, const std::string& text);
    /** Shows the state, if it is time to. @throw Failure (Internal) if a line cannot be written */
    void show(ScreenContents contents, Clock::time_point now);
    /** Writes a last line, unless the terminal takes no output. The screen is gone then. */
    void finish(const std::string& line);

  private:
    ResultStream& result_;
    bool is_quiet_;
    bool has_screen_;
    std::optional<Terminal> terminal_;
    KeyReader keys_;
    std::vector<std::string> events_;  // the last ones, the newest last
    Clock::time_point last_shown_;
};

}  // namespace sonivex_tool
