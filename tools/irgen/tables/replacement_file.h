// A file that is replaced as a whole or not at all: the new one is written under a temporary name beside the
// old one and then renamed.
//
// Use: ReplacementFile file(path); then file.commit(text) when the text is ready.
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
    /** Opens the temporary file at once, so that an unwritable path fails before the contents are computed.
     *  Throws UnwritableOutput, also if there is something at the path that is not a regular file. */
    explicit ReplacementFile(std::string path);
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;
    /** Removes the temporary file unless commit succeeded; the old file is then untouched. */
    ~ReplacementFile();

    /** Writes the new contents and puts them in the old file's place. Call it once. Throws
     *  UnwritableOutput. */
    void commit(const std::string& text);

  private:
    [[noreturn]] void fail() const;

    std::string path_;
    std::string temporary_;
    std::ofstream file_;
    bool is_committed_ = false;
};

}  // namespace sonivex_irgen
