#pragma once

#include <string>

namespace sonivex_tool {

/** Writes to a terminal without ever waiting for it: nobody may read a terminal, or its output may be
 *  stopped.
 *
 *  It opens the terminal anew, because a descriptor's O_NONBLOCK would hold for every program that has
 *  inherited the same open file. */
class ScreenOutput {
  public:
    /** @param terminal descriptor of the terminal; negative for none */
    explicit ScreenOutput(int terminal);
    ~ScreenOutput();
    ScreenOutput(const ScreenOutput&) = delete;
    ScreenOutput& operator=(const ScreenOutput&) = delete;

    /** Returns true if the terminal could be opened. The other functions do nothing without it. */
    bool isOpen() const { return descriptor_ >= 0; }
    /** Returns the descriptor, which does not block, or -1. */
    int descriptor() const { return descriptor_; }

    /** Writes as much as the terminal takes; the next call writes the rest. Drops the whole text while there
     *  is a rest of an earlier one, so that no sequence is torn. */
    void show(const std::string& text);
    /** Writes what is left and then a last text. It waits for a slow terminal, but for 0.3 s at most.
     *  @return false if the terminal has not taken everything */
    bool finish(const std::string& text);

  private:
    bool writeRest();

    int descriptor_ = -1;
    std::string rest_;  // not yet taken by the terminal
};

}  // namespace sonivex_tool
