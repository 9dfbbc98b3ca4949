#include "play_script.h"

#include <cmath>
#include <sstream>

#include "failure.h"
#include "nearest_word.h"

namespace sonivex_tool {
namespace {

[[noreturn]] void refuse(const std::string& reason) {
    throw Failure(ExitCode::Usage, "--script: " + reason);
}

ScriptedKey parseEntry(const std::string& entry) {
    std::istringstream words(entry);
    words.imbue(std::locale::classic());
    double time_s = 0.0;
    std::string key;
    std::string rest;
    if (!(words >> time_s >> key) || (words >> rest))
        refuse("\"" + entry + "\" must be a time in seconds and a key, as in \"2.5 e\"");
    if (!std::isfinite(time_s) || time_s < 0.0) refuse("\"" + entry + "\" has no time from 0 on");
    const std::optional<PlayAction> action = actionOfKey(key);
    if (!action) refuse("unknown key \"" + key + "\"" + didYouMean(key, playKeys()));
    return {time_s, *action};
}

}  // namespace

std::vector<ScriptedKey> parseScript(const std::string& text) {
    std::vector<ScriptedKey> keys;
    std::istringstream entries(text);
    for (std::string entry; std::getline(entries, entry, ';');) {
        if (entry.find_first_not_of(" \t\n") == std::string::npos) continue;
        keys.push_back(parseEntry(entry));
        const size_t count = keys.size();
        if (count > 1 && keys[count - 1].time_s < keys[count - 2].time_s)
            refuse("the time of \"" + entry + "\" is before that of the key before it");
    }
    return keys;
}

}  // namespace sonivex_tool
