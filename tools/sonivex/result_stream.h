#pragma once

#include <string>

namespace sonivex_tool {

/** Where a command writes its result: standard output as the program was given it.
 *
 *  Effects print to standard output on their own account. From construction on, whatever is written to
 * descriptor 1 goes to standard error, or nowhere, so that the result stands alone. One object per program.
 */
class ResultStream {
  public:
    enum class Prints { ToStandardError, Nowhere };

    explicit ResultStream(Prints prints);
    ~ResultStream();
    ResultStream(const ResultStream&) = delete;
    ResultStream& operator=(const ResultStream&) = delete;

    /** Write all of `text`. @throw Failure when it cannot be written. */
    void write(const std::string& text);

  private:
    int descriptor_;
};

}  // namespace sonivex_tool
