#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "output.h"

namespace sonivex_tool {

/** An output file that appears under its name only when it is complete.
 *
 * The data goes to a file with a temporary name in the destination's folder, which `commit` renames. Without
 * a commit the destructor removes the temporary file. A second signal removes it too (see interrupt.h), but
 * only for one object at a time. A symbolic link is followed: its target is replaced. */
class OutputFile : public Output {
  public:
    /** Checks early for a destination that would make `commit` fail: a folder, a special file, or an existing
     * file that may not be replaced. @throw Failure (OutputExists) */
    static void check(const std::string& path, bool replace);

    /** Creates the temporary file.
     *
     * The constructor and every member below throw Failure (OutputExists, OutputNotWritable, NoSpace).
     * @param replace true if `commit` may replace an existing file; if false, it never does
     * @throw std::bad_alloc */
    OutputFile(const std::string& path, bool replace);
    ~OutputFile() override;

    /** Writes the buffered data through to the disk, closes the file and gives it its name. Call it once. */
    void commit() override;

  private:
    void createTemporary();
    void giveName();
    int writeAll(const uint8_t* data, size_t bytes) override;
    static int64_t seek(void* output, int64_t offset, int whence);
    void close();

    std::string path_;         // as the user typed it
    std::string destination_;  // with symbolic links followed
    bool replace_;
    std::string temporary_;  // empty when there is no file to remove
    int descriptor_ = -1;
};

}  // namespace sonivex_tool
