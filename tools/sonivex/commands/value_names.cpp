#include "value_names.h"

#include <sstream>
#include <utility>

namespace sonivex_tool {
namespace {

// Names of the checks. CLI11 shows the description of a check only for options without a text of their own.
constexpr char kOne[] = "one name";
constexpr char kList[] = "list of names";

}  // namespace

CLI::Validator namedValues(const ValueNames& values, std::function<std::string(const std::string&)> check) {
    std::string lines;
    for (const std::string& name : values.names) lines += name + "\n";
    return {[check = std::move(check)](const std::string& text) { return check(text); }, lines,
            values.is_list ? kList : kOne};
}

ValueNames valueNames(CLI::Option& option) {
    for (const char* kind : {kOne, kList}) {
        const CLI::Validator* check = nullptr;
        try {
            check = option.get_validator(kind);
        } catch (const CLI::OptionNotFound&) {
            continue;
        }
        ValueNames values{.names = {}, .is_list = kind == kList};
        std::istringstream lines(check->get_description());
        for (std::string name; std::getline(lines, name);) values.names.push_back(name);
        return values;
    }
    return {};
}

}  // namespace sonivex_tool
