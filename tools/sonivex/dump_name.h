#pragma once

#include <optional>
#include <string>

namespace sonivex_tool {

/** What the name of one of the filter's dump files says: "sonivex_surround_input_12345678.pcm". */
struct DumpName {
    std::string folder;    // with its slash; empty for the working folder
    std::string effect;    // "surround", "dialoguenhance" or "normalizer"
    bool is_input = true;  // what went into the effect, or what came out of it
    std::string session;   // eight digits, the same for both files of a session

    /** The path of such a file. */
    std::string path() const;

    /** The other file of the session. */
    DumpName partner() const;
};

/** Read the name of a dump file; nothing when `path` ends in another kind of name. */
std::optional<DumpName> parseDumpName(const std::string& path);

}  // namespace sonivex_tool
