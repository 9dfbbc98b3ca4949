#include "option_checks.h"

extern "C" {
#include <libavutil/channel_layout.h>
}

#include <algorithm>
#include <array>
#include <cmath>

#include "nearest_word.h"
#include "value_names.h"

namespace sonivex_tool {
namespace {

constexpr double kLowestBitRate = 500.0;
constexpr double kHighestBitRate = 100e6;
constexpr int kHighestStream = 9999;

bool isDigit(char letter) {
    return letter >= '0' && letter <= '9';
}

bool isLetter(char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
}

std::string inQuotes(const std::string& text) {
    return "\"" + text + "\"";
}

std::string listOf(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
    return list;
}

std::vector<std::string> layoutNames() {
    std::vector<std::string> names;
    void* position = nullptr;
    while (const AVChannelLayout* layout = av_channel_layout_standard(&position)) {
        std::array<char, 64> name{};
        if (av_channel_layout_describe(layout, name.data(), name.size()) > 0) names.emplace_back(name.data());
    }
    return names;
}

// Reads a number of bits in a second with a suffix k or M, or none. Returns NaN if it is none.
double parsedBitRate(std::string text) {
    double unit = 1.0;
    if (!text.empty() && (text.back() == 'k' || text.back() == 'K')) unit = 1e3;
    if (!text.empty() && text.back() == 'M') unit = 1e6;
    if (unit > 1.0) text.pop_back();
    double number = 0.0;
    if (text.empty() || !CLI::detail::lexical_cast(text, number)) return std::nan("");
    return number * unit;
}

}  // namespace

CLI::Validator finiteFrom(double lowest, double highest) {
    std::string range = "must be a finite number of at least " + CLI::detail::to_string(lowest);
    if (highest < std::numeric_limits<float>::max())  // a limit of the arithmetic tells the user nothing
        range += " and at most " + CLI::detail::to_string(highest);
    return CLI::Validator(
        [lowest, highest, range](const std::string& text) {
            double number = 0.0;
            const bool is_good = CLI::detail::lexical_cast(text, number) && std::isfinite(number) &&
                                 number >= lowest && number <= highest;
            return is_good ? std::string() : range + ", not " + inQuotes(text);
        },
        "", "finite");
}

CLI::Validator oneOf(const std::vector<std::string>& names) {
    return namedValues({.names = names, .is_list = false}, [names](const std::string& text) {
        if (std::find(names.begin(), names.end(), text) != names.end()) return std::string();
        return "must be one of " + listOf(names) + ", not " + inQuotes(text) + didYouMean(text, names);
    });
}

CLI::Validator bitRate() {
    return CLI::Validator(
        [](std::string& text) {
            const double rate = parsedBitRate(text);
            if (!(rate >= kLowestBitRate && rate <= kHighestBitRate))
                return "must be 500 to 100M bits in a second, as in 192k, not " + inQuotes(text);
            text = std::to_string(std::llround(rate));
            return std::string();
        },
        "", "bit rate");
}

CLI::Validator channelLayout() {
    return namedValues({.names = layoutNames(), .is_list = false}, [](const std::string& text) {
        AVChannelLayout layout{};
        const bool is_known = av_channel_layout_from_string(&layout, text.c_str()) >= 0;
        av_channel_layout_uninit(&layout);
        if (is_known) return std::string();
        return "must be the name of a channel layout, as in stereo or 5.1, not " + inQuotes(text) +
               didYouMean(text, layoutNames());
    });
}

CLI::Validator streamChoice() {
    return CLI::Validator(
        [](const std::string& text) {
            const bool is_number =
                !text.empty() && text.size() <= 4 && std::all_of(text.begin(), text.end(), isDigit);
            const bool is_language = text.size() >= 2 && std::all_of(text.begin(), text.end(), [](char c) {
                                         return isLetter(c) || isDigit(c) || c == '-';
                                     });
            const bool starts_as_language = !text.empty() && isLetter(text.front());
            if (is_number || (is_language && starts_as_language)) return std::string();
            return "must be a number from 0 to " + std::to_string(kHighestStream) +
                   " or a language such as eng, not " + inQuotes(text);
        },
        "", "stream");
}

CLI::Validator notEmpty(const std::string& what) {
    return CLI::Validator(
        [what](const std::string& text) { return text.empty() ? "must name " + what : std::string(); }, "",
        "text");
}

}  // namespace sonivex_tool
