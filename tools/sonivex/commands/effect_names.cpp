#include "effect_names.h"

#include <algorithm>

#include "nearest_word.h"
#include "value_names.h"

namespace sonivex_tool {
namespace {

// CLI11's split drops an empty name at the end.
std::vector<std::string> namesIn(const std::string& text) {
    std::vector<std::string> names(1);
    for (const char letter : text) {
        if (letter == ',') {
            names.emplace_back();
        } else {
            names.back() += letter;
        }
    }
    return names;
}

std::string whyNoChain(const std::string& text) {
    std::vector<std::string> seen;
    for (const std::string& name : namesIn(text)) {
        if (name.empty()) return "must be names separated by commas, not \"" + text + "\"";
        if (findEffect(name) == nullptr)
            return "unknown effect \"" + name + "\"" + didYouMean(name, effectNames());
        if (std::find(seen.begin(), seen.end(), name) != seen.end())
            return std::string("\"").append(text).append("\" names ").append(name).append(" twice");
        seen.push_back(name);
    }
    return {};
}

}  // namespace

CLI::Validator effectChain() {
    return namedValues({.names = effectNames(), .is_list = true}, whyNoChain);
}

std::vector<const Effect*> chainOf(const std::string& names) {
    std::vector<const Effect*> chain;
    for (const std::string& name : namesIn(names)) chain.push_back(findEffect(name));
    return chain;
}

}  // namespace sonivex_tool
