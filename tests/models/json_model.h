// A reader for JSON (RFC 8259) that knows the members of the outermost object and nothing else.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace test {

/** The value of a member. */
struct JsonMember {
    enum class Kind { kString, kNumber, kTrue, kFalse, kOther } kind = Kind::kOther;
    std::string text;     // of a string, in UTF-8
    double number = 0.0;  // within the range of a double
};

using JsonMembers = std::map<std::string, JsonMember>;

/** @return the members of the object in `text`; of several with one name, the last. None for a value that
 *  is no object, and nothing for a text that is not JSON. */
std::optional<JsonMembers> readJsonMembers(std::string_view text);

}  // namespace test
