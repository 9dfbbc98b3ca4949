#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace sonivex_tool {

/** The folder to which the filter writes the PCM that enters and leaves its effect.
 *
 *  The program names the folder to the filter through a global property. The filter does not report the file
 *  names that it chooses, so this class counts every dump file that appears in the folder while it lives. */
class DumpFolder {
  public:
    /** Makes `path` the folder for all dumps of this process.
     *  @throw Failure (OutputNotWritable) if it is not a folder or the process may not create files in it */
    explicit DumpFolder(const std::string& path);

    /** Returns the names of the dump files that appeared since construction, in lexical order. */
    std::vector<std::string> newFiles() const;

    /** Returns the total bytes in the new files of one side of the effect.
     *  @param is_input true: the PCM that entered the effect; false: the PCM that left it */
    uint64_t newBytes(bool is_input) const;

  private:
    std::set<std::string> dumpFiles() const;

    std::string path_;
    std::set<std::string> old_files_;
};

}  // namespace sonivex_tool
