// A file that is replaced as a whole or not at all: written under a temporary name beside it, then renamed.
#pragma once

#include <fstream>
#include <stdexcept>
#include <string>

namespace sonivex_irgen {

/** The file cannot be written; the text is its name and the reason. */
class UnwritableOutput : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

class ReplacementFile {
  public:
    /** Opens the temporary file, so that a path that cannot be written shows before the work for it is done.
     *  Throws UnwritableOutput. */
    explicit ReplacementFile(std::string path);
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;
    /** Without commit nothing is left but the old file. */
    ~ReplacementFile();

    /** Write the new contents and put them in the old file's place. Once. Throws UnwritableOutput. */
    void commit(const std::string& text);

  private:
    [[noreturn]] void fail() const;

    std::string path_;
    std::string temporary_;
    std::ofstream file_;
    bool is_committed_ = false;
};

}  // namespace sonivex_irgen
