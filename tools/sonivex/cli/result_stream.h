#pragma once

#include <string>

namespace sonivex_tool {

/** Writes a command's result to the program's original standard output, or to standard error if the original
 * standard output carries audio.
 *
 * Some effects print to standard output themselves. The constructor therefore redirects descriptor 1 to
 * standard error or to /dev/null, so that the result or the audio stands alone. A program has one such
 * object. */
class ResultStream {
  public:
    /** Destination of the effects' own output. */
    enum class Prints { ToStandardError, Nowhere };
    /** Destination of the result. */
    enum class Results { ToStandardOutput, ToStandardError };

    /** Redirects descriptor 1 for the rest of the program's life; the destructor does not restore it. */
    explicit ResultStream(Prints prints, Results results = Results::ToStandardOutput);
    ~ResultStream();
    ResultStream(const ResultStream&) = delete;
    ResultStream& operator=(const ResultStream&) = delete;

    /** Writes all of `text`. @throw as writeToStandard */
    void write(const std::string& text);

  private:
    int standard_output_;  // the original one
    Results results_;
};

/** Writes all of `text` to a standard stream.
 *  @param name "output" or "error", for the message
 *  @throw Failure (NoSpace, or Internal for any other failed write) */
void writeToStandard(int descriptor, const char* name, const std::string& text);

/** Returns the descriptor of the program's original standard output, for audio that goes there. It belongs to
 * the ResultStream, which must outlive its use. Without a ResultStream it is descriptor 1. It is -1 if no
 * descriptor was left. */
int originalStandardOutput();

/** Returns true if a path on the command line means standard output: "-" or "pipe:1". */
bool namesStandardOutput(const std::string& path);

}  // namespace sonivex_tool
