#include "version_choice.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <limits>

#include "failure.h"
#include "nearest_word.h"

namespace sonivex_tool {
namespace {

[[noreturn]] void refuse(const std::string& text, const std::string& reason) {
    throw Failure(ExitCode::Usage, "--effect \"" + text + "\": " + reason);
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts(1);
    for (const char letter : text) {
        if (letter == separator) {
            parts.emplace_back();
        } else {
            parts.back() += letter;
        }
    }
    return parts;
}

double numberOf(const std::string& text, const std::string& setting, const std::string& value) {
    double number = 0.0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    if (error != std::errc() || end != value.data() + value.size() || !std::isfinite(number))
        refuse(text, setting + " must be a number, not \"" + value + "\"");
    return number;
}

void setSurround(FilterOptions& options, const std::string& text, const std::string& setting,
                 const std::string& value) {
    if (setting == "type") {
        if (value != "3DSurround" && value != "MegaBass")
            refuse(text, "type must be 3DSurround or MegaBass, not \"" + value + "\"" +
                             didYouMean(value, {"3DSurround", "MegaBass"}));
        options.surround_type = value;
    } else if (setting == "mode") {
        if (value != "1" && value != "2" && value != "3")
            refuse(text, "mode must be 1, 2 or 3, not \"" + value + "\"");
        options.surround_mode = value.front() - '0';
    } else if (setting == "limiter") {
        if (value != "on" && value != "off") refuse(text, "limiter must be on or off, not \"" + value + "\"");
        options.no_limiter = value == "off";
    } else {
        refuse(text, "surround has no setting \"" + setting + "\"" +
                         didYouMean(setting, {"type", "mode", "limiter"}));
    }
}

void set(FilterOptions& options, const std::string& text, const std::string& effect,
         const std::string& assignment) {
    const std::size_t sign = assignment.find('=');
    if (sign == std::string::npos)
        refuse(text, "\"" + assignment + "\" must be SETTING=VALUE, as in voice=3");
    const std::string setting = assignment.substr(0, sign);
    const std::string value = assignment.substr(sign + 1);
    if (effect == "surround") {
        setSurround(options, text, setting, value);
    } else if (effect == "dialogue" && setting == "voice") {
        const double voice = numberOf(text, setting, value);
        if (voice < 1.0 || voice > std::numeric_limits<float>::max())
            refuse(text, "voice must be 1 or more, not " + value);
        options.voice = voice;
    } else {
        refuse(text, effect + " has no setting \"" + setting + "\"");
    }
}

// The shortest text of a number.
std::string textOf(double number) {
    char text[32] = {};
    const auto [end, error] = std::to_chars(text, text + sizeof text, number);
    return error == std::errc() ? std::string(text, end) : "?";
}

std::string settingsOf(const Effect& effect, const FilterOptions& options) {
    std::string text;
    const auto append = [&](const std::string& part) { text += (text.empty() ? "" : ", ") + part; };
    if (effect.name == "surround") {
        if (options.surround_type) append(*options.surround_type);
        if (options.surround_mode) append("mode " + std::to_string(*options.surround_mode));
        if (options.no_limiter) append("no limiter");
    }
    if (effect.name == "dialogue" && options.voice) append("voice " + textOf(*options.voice));
    return text;
}

}  // namespace

VersionChoice parseVersion(const std::string& text) {
    VersionChoice version;
    version.text = text;
    for (const std::string& part : split(text, ',')) {
        const std::vector<std::string> words = split(part, ':');
        const std::string& name = words.front();
        if (name.empty()) refuse(text, "an effect's name is missing");
        const Effect* effect = findEffect(name);
        if (effect == nullptr)
            refuse(text, "unknown effect \"" + name + "\"" + didYouMean(name, effectNames()));
        if (std::find(version.chain.begin(), version.chain.end(), effect) != version.chain.end())
            refuse(text, "it names " + name + " twice");
        version.chain.push_back(effect);
        for (auto word = words.begin() + 1; word != words.end(); ++word)
            set(version.options, text, name, *word);
    }
    if (version.options.surround_mode && version.options.surround_type != "MegaBass")
        refuse(text, "mode belongs to the type MegaBass: add type=MegaBass");
    return version;
}

std::string titleOf(const VersionChoice& version) {
    std::string title;
    for (const Effect* effect : version.chain) {
        title += (title.empty() ? "" : ", ") + effect->name;
        const std::string settings = settingsOf(*effect, version.options);
        if (!settings.empty()) title += " (" + settings + ")";
    }
    return title;
}

std::string fileNameOf(const VersionChoice& version) {
    std::string name;
    for (const char letter : titleOf(version)) {
        const auto byte = static_cast<unsigned char>(letter);
        if (std::isalnum(byte) != 0) {
            name += static_cast<char>(std::tolower(byte));
        } else if (!name.empty() && name.back() != '-') {
            name += '-';
        }
    }
    while (!name.empty() && name.back() == '-') name.pop_back();
    return name;
}

void requireDifferent(const std::vector<VersionChoice>& versions) {
    for (auto later = versions.begin(); later != versions.end(); ++later) {
        const auto same = std::find_if(versions.begin(), later, [&](const VersionChoice& earlier) {
            return fileNameOf(earlier) == fileNameOf(*later);
        });
        if (same != later) refuse(later->text, "it is the same version as --effect \"" + same->text + "\"");
    }
}

}  // namespace sonivex_tool
