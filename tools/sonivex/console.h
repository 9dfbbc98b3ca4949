#pragma once

#include <chrono>
#include <optional>
#include <string>

namespace sonivex_tool {

/** What a command says while it works, on standard error: lines of text, and how far it is, as a bar on a
 * terminal or else as a line now and then. A quiet console says nothing. */
class Console {
  public:
    explicit Console(bool quiet);

    /** A line for the user. */
    void note(const std::string& line);

    /** The work is at `seconds` of the audio, out of `total` if that is known. Cheap; call it often. */
    void progress(double seconds, std::optional<double> total);

    /** The work is done, or has failed: the bar goes away. */
    void clearBar();

  private:
    using Clock = std::chrono::steady_clock;

    void drawBar(double seconds, std::optional<double> total);

    bool quiet_;
    bool is_terminal_;
    bool bar_is_shown_ = false;
    Clock::time_point started_ = Clock::now();
    Clock::time_point last_shown_;
};

/** "1:02:03" or "2:03". */
std::string clockTime(double seconds);

/** "sonivex: <line>" on standard error: the prefix tells errors from everything else there. */
void printError(const std::string& line);

}  // namespace sonivex_tool
