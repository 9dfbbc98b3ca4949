#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace sonivex_tool {

/** How far a command with many files has come. */
struct FileCounts {
    size_t done = 0;  // failed ones included
    size_t total = 0;
    size_t failed = 0;
    size_t running = 0;
};

/** Prints notes and progress to standard error while a command works.
 *
 * Progress is a bar on a terminal, redrawn at most every 100 ms, and otherwise a line at most every 5 s. */
class Console {
  public:
    /** @param quiet print nothing at all */
    explicit Console(bool quiet);

    /** Prints a line for the user, in place of the bar if one is shown. */
    void note(const std::string& line);

    /** Reports that `seconds` of audio are done, out of `total` if that is known. Cheap enough to call for
     * every frame: it prints only when the next update is due. */
    void progress(double seconds, std::optional<double> total);

    /** Reports the state of many files, as cheaply. */
    void progress(const FileCounts& files);

    /** Removes the bar, if one is shown, when the work has ended or failed. */
    void clearBar();

  private:
    using Clock = std::chrono::steady_clock;

    /** Returns true if the next update is due, and counts it as shown. */
    bool isDue();
    /** @param done 0 to 1; without it the bar is left out */
    void drawBar(std::optional<double> done, const std::string& text);

    bool quiet_;
    bool is_terminal_;
    bool bar_is_shown_ = false;
    Clock::time_point started_ = Clock::now();
    Clock::time_point last_shown_;
};

/** Formats a duration as "1:02:03", or as "2:03" below one hour. Fractions of a second are cut off, and a
 * negative duration counts as 0. */
std::string clockTime(double seconds);

/** Prints "sonivex: <line>" to standard error, without using memory. Only errors carry this prefix. */
void printError(std::string_view line);

}  // namespace sonivex_tool
