#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

namespace sonivex_tool {

/** Where the filter writes the PCM that enters and leaves its effect. The player tells it through a property,
 * and the filter does not tell which names it chose: they are those that appear while this object lives. */
class DumpFolder {
  public:
    /** Make `path` the folder of all dumps of this process.
     *  @throw Failure (OutputNotWritable) when it is no folder, or files cannot be made in it */
    explicit DumpFolder(const std::string& path);

    /** Names of the dump files that have come since, in order. */
    std::vector<std::string> newFiles() const;

    /** How much is in those of them that hold what went into the effect, or what came out of it. */
    uint64_t newBytes(bool is_input) const;

  private:
    std::set<std::string> dumpFiles() const;

    std::string path_;
    std::set<std::string> old_files_;
};

}  // namespace sonivex_tool
