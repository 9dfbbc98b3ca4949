#pragma once

#include <string>

namespace sonivex_tool {

/** Writes a command's result to the program's original standard output.
 *
 * Some effects print to standard output themselves. The constructor therefore redirects descriptor 1 to
 * standard error or to /dev/null, so that the result stands alone. A program has one such object. */
class ResultStream {
  public:
    /** Destination of the effects' own output. */
    enum class Prints { ToStandardError, Nowhere };

    /** Redirects descriptor 1 for the rest of the program's life; the destructor does not restore it. */
    explicit ResultStream(Prints prints);
    ~ResultStream();
    ResultStream(const ResultStream&) = delete;
    ResultStream& operator=(const ResultStream&) = delete;

    /** Writes all of `text`. @throw Failure (Internal) when a write fails */
    void write(const std::string& text);

  private:
    int descriptor_;
};

}  // namespace sonivex_tool
