#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sonivex_tool {

// A key is a text: the character itself ("e", "+"), or a name ("left", "right", "up", "down", "pageup",
// "pagedown", "space", "enter").

/** Turns the bytes of a terminal into keys. A sequence may be cut anywhere between two calls. */
class KeyReader {
  public:
    /** Returns the keys that `bytes` complete. Sequences of unknown keys are left out. */
    std::vector<std::string> read(std::string_view bytes);

  private:
    std::optional<std::string> next();
    void skipRestOfSequence();

    std::string waiting_;       // an unfinished sequence
    bool is_overlong_ = false;  // the sequence before it was too long, and may go on
};

}  // namespace sonivex_tool
