#pragma once

#include <optional>
#include <string>

namespace sonivex_tool {

/** The parts of the name of a dump file, such as "sonivex_surround_input_12345678.pcm". */
struct DumpName {
    std::string folder;    // with a trailing slash; empty for the working folder
    std::string effect;    // "surround", "dialoguenhance" or "normalizer"
    bool is_input = true;  // true: the effect's input; false: its output
    std::string session;   // eight digits, the same for both files of a session

    /** Returns the path of the file. */
    std::string path() const;

    /** Returns the name of the session's other file. */
    DumpName partner() const;
};

/** Parses the path of a dump file.
 *  @return nothing if its last component is not the name of a dump file */
std::optional<DumpName> parseDumpName(const std::string& path);

}  // namespace sonivex_tool
