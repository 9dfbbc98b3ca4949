#include "random_host/random_options.h"

namespace test {

std::string effectOption(ByteSource& bytes) {
    return bytes.of<const char*>({
        R"({"enable_surround": true})",
        R"({"enable_surround": true, "surround_effect_type": "MegaBass"})",
        R"({"enable_surround": true, "surround_effect_type": "3DSurround", "surround_mode": 3})",
        R"({"enable_dialoguenhance": true})",
        R"({"enable_dialoguenhance": true, "dialoguenhance_voice": 4.0})",
        R"({"enable_normalizer": true})",
        R"({"enable_normalizer": true, "enable_dump": false})",
        R"({"enable_surround": false, "enable_dialoguenhance": false, "enable_normalizer": false})",
    });
}

std::string objectOption(ByteSource& bytes, bool may_dump) {
    static constexpr const char* kMembers[] = {
        "enable_surround",      "enable_dialoguenhance", "enable_normalizer",
        "surround_effect_type", "surround_mode",         "surround_limiter",
        "dialoguenhance_voice", "enable_dump",           "enable_something_else",
    };
    static constexpr const char* kValues[] = {
        "true",
        "true",
        "true",
        "true",
        "true",
        "true",
        "true",
        "false",
        "1",
        "2",
        "3",
        "0",
        "-1",
        "4",
        "1e400",
        "-1e400",
        "2.5",
        "1e-320",
        "null",
        "\"MegaBass\"",
        "[]",
        "{}",
        "\"3DSurround\"",
        "\"\"",
        "\"true\"",
        "9223372036854775808",
        "2147483648",
        "-0",
    };
    std::string text = "{";
    for (std::uint32_t left = 1 + bytes.below(4); left > 0; --left) {
        const std::string member = bytes.of(kMembers);
        const std::string value = bytes.of(kValues);
        text += "\"" + member + "\": " + (member == "enable_dump" && !may_dump ? "false" : value);
        if (left > 1) text += ", ";
    }
    return text + "}";
}

std::string numberOption(ByteSource& bytes) {
    static constexpr const char* kNumbers[] = {
        "25",     "25",         "30", "60", "62",   "24",    "23.976",       "1",   "1.0",
        "2",      "0.5",        "0",  "-1", "1e9",  "1e400", "nan",          "inf", "-inf",
        "1e-320", "2147483647", "x",  "",   " 50 ", "0x20",  "1.9999999999",
    };
    return bytes.oneIn(16) ? bytes.text(16) : std::string(bytes.of(kNumbers));
}

}  // namespace test
