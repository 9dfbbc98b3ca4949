#include "dump_name.h"

#include <regex>

namespace sonivex_tool {

std::string DumpName::path() const {
    return folder + "sonivex_" + effect + (is_input ? "_input_" : "_output_") + session + ".pcm";
}

DumpName DumpName::partner() const {
    DumpName other = *this;
    other.is_input = !is_input;
    return other;
}

std::optional<DumpName> parseDumpName(const std::string& path) {
    static const std::regex pattern(
        "sonivex_(surround|dialoguenhance|normalizer)_(input|output)_([0-9]{8})\\.pcm");
    const std::size_t slash = path.rfind('/');
    const std::size_t name_at = slash == std::string::npos ? 0 : slash + 1;
    const std::string name = path.substr(name_at);
    std::smatch parts;
    if (!std::regex_match(name, parts, pattern)) return std::nullopt;
    return DumpName{path.substr(0, name_at), parts[1], parts[2] == "input", parts[3]};
}

}  // namespace sonivex_tool
