// The names that values of an option have. The checks of the values put them where manuals and completions
// find them.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

namespace sonivex_tool {

/** The values of an option that have names. */
struct ValueNames {
    std::vector<std::string> names;  // empty if any word may be a value
    bool is_list = false;            // a value may be several of them with commas between
};

/** Makes a check of a value that also knows the names.
 *
 *  @param check returns what is wrong with a value, or an empty text */
CLI::Validator namedValues(const ValueNames& values, std::function<std::string(const std::string&)> check);

/** The names that the checks of an option know; none if none does. */
ValueNames valueNames(CLI::Option& option);

}  // namespace sonivex_tool
