#pragma once

#include <string>
#include <vector>

#include "screen_output.h"

namespace sonivex_tool {

/** Which parts of the terminal a program takes over. */
enum class TerminalUse { KeysAndScreen, Keys };

/** Takes over the terminal: keys come at once and without an echo, and the screen shows lines. The destructor
 *  gives it back as it was, and so does a second signal that ends the program. There is one such object at a
 *  time.
 *
 *  Ctrl-C still sends its signal; Ctrl-Z, Ctrl-\, Ctrl-S and Ctrl-Q do nothing. What is written to standard
 *  error while the screen is shown does not appear, because it would tear the screen. No function waits for a
 *  terminal that takes no output. */
class Terminal {
  public:
    /** @param keys descriptor of the terminal from which keys come
     *  @param screen descriptor of the terminal that shows the lines
     *  @throw Failure (Internal) if the terminal does not obey */
    Terminal(int keys, int screen, TerminalUse use);
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /** Returns true if the terminal shows lines: it was asked to, and could be opened for it. */
    bool hasScreen() const { return output_.isOpen(); }

    /** Shows the lines in place of those before. Lines that the terminal does not take now are dropped. */
    void draw(const std::vector<std::string>& lines);

    /** Gives the terminal back as it was; only the destructor may be called then. If the terminal takes no
     *  output, standard error stays silent, so that the program's last words do not make it wait.
     *  @return false if the terminal takes no output */
    bool giveBack();

    /** Returns the terminal's size; it may change at any time. */
    int columns() const;
    int rows() const;

    /** Waits for keys.
     *  @return the bytes of the keys; empty if none came, or if there will be no more (see hasEnded) */
    std::string read(int timeout_ms);
    /** Returns true if the terminal is gone, from which no key will come. */
    bool hasEnded() const { return has_ended_; }

  private:
    int keys_;
    int screen_;
    ScreenOutput output_;
    bool is_given_back_ = false;
    int kept_errors_ = -1;  // the original standard error
    bool has_ended_ = false;
};

/** Returns true if this program may use the terminal. A program in the background of a shell may not: the
 *  system would stop it. */
bool isInForeground(int terminal);

}  // namespace sonivex_tool
