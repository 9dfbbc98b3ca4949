#pragma once

#include <string>
#include <vector>

namespace sonivex_tool {

/** Which parts of the terminal a program takes over. */
enum class TerminalUse { KeysAndScreen, Keys };

/** Takes over the terminal: keys come at once and without an echo, and the screen shows lines. The destructor
 *  gives it back as it was, and so does a second signal that ends the program. There is one such object at a
 *  time.
 *
 *  Ctrl-C still sends its signal; Ctrl-Z does nothing. What is written to standard error while the screen is
 *  shown does not appear, because it would tear the screen. */
class Terminal {
  public:
    /** @param keys descriptor of the terminal from which keys come
     *  @param screen descriptor of the terminal that shows the lines
     *  @throw Failure (Internal) if the terminal does not obey */
    Terminal(int keys, int screen, TerminalUse use);
    ~Terminal();
    Terminal(const Terminal&) = delete;
    Terminal& operator=(const Terminal&) = delete;

    /** Shows the lines in place of those before. */
    void draw(const std::vector<std::string>& lines) const;

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
    TerminalUse use_;
    int kept_errors_ = -1;  // the original standard error
    bool has_ended_ = false;
};

}  // namespace sonivex_tool
