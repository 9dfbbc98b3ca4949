#include "stream_choice.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>

namespace sonivex_tool {
namespace {

// The three ISO 639 codes of a language that has several: part 1, part 2 terminological, and part 2
// bibliographic. The languages are those in which films and broadcasts are common; others are found by the
// code that the file has.
struct LanguageCodes {
    const char* two_letters;
    const char* terminological;
    const char* bibliographic;
};
constexpr std::array<LanguageCodes, 60> kLanguages = {{
    {"ar", "ara", "ara"}, {"be", "bel", "bel"}, {"bg", "bul", "bul"}, {"bn", "ben", "ben"},
    {"bs", "bos", "bos"}, {"ca", "cat", "cat"}, {"cs", "ces", "cze"}, {"cy", "cym", "wel"},
    {"da", "dan", "dan"}, {"de", "deu", "ger"}, {"el", "ell", "gre"}, {"en", "eng", "eng"},
    {"es", "spa", "spa"}, {"et", "est", "est"}, {"eu", "eus", "baq"}, {"fa", "fas", "per"},
    {"fi", "fin", "fin"}, {"fr", "fra", "fre"}, {"ga", "gle", "gle"}, {"gl", "glg", "glg"},
    {"gu", "guj", "guj"}, {"he", "heb", "heb"}, {"hi", "hin", "hin"}, {"hr", "hrv", "hrv"},
    {"hu", "hun", "hun"}, {"hy", "hye", "arm"}, {"id", "ind", "ind"}, {"is", "isl", "ice"},
    {"it", "ita", "ita"}, {"ja", "jpn", "jpn"}, {"ka", "kat", "geo"}, {"kn", "kan", "kan"},
    {"ko", "kor", "kor"}, {"la", "lat", "lat"}, {"lt", "lit", "lit"}, {"lv", "lav", "lav"},
    {"mk", "mkd", "mac"}, {"ml", "mal", "mal"}, {"mr", "mar", "mar"}, {"ms", "msa", "may"},
    {"nl", "nld", "dut"}, {"no", "nor", "nor"}, {"pa", "pan", "pan"}, {"pl", "pol", "pol"},
    {"pt", "por", "por"}, {"ro", "ron", "rum"}, {"ru", "rus", "rus"}, {"sk", "slk", "slo"},
    {"sl", "slv", "slv"}, {"sq", "sqi", "alb"}, {"sr", "srp", "srp"}, {"sv", "swe", "swe"},
    {"ta", "tam", "tam"}, {"te", "tel", "tel"}, {"th", "tha", "tha"}, {"tr", "tur", "tur"},
    {"uk", "ukr", "ukr"}, {"ur", "urd", "urd"}, {"vi", "vie", "vie"}, {"zh", "zho", "chi"},
}};

std::string lowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

// Returns one code for all codes of a language; a region after it ("en-GB") does not count.
std::string canonicalLanguage(const std::string& code) {
    std::string language = lowerCase(code.substr(0, code.find_first_of("-_")));
    for (const LanguageCodes& codes : kLanguages) {
        if (language == codes.two_letters || language == codes.bibliographic) return codes.terminological;
    }
    return language;
}

template <typename Accepts>
std::optional<size_t> defaultOrFirst(const std::vector<AudioTrack>& tracks, Accepts accepts) {
    std::optional<size_t> first;
    for (size_t i = 0; i < tracks.size(); ++i) {
        if (!accepts(tracks[i])) continue;
        if (tracks[i].is_default) return i;
        if (!first) first = i;
    }
    return first;
}

}  // namespace

std::optional<size_t> chooseTrack(const std::vector<AudioTrack>& tracks,
                                  const std::optional<std::string>& wish) {
    if (!wish) return defaultOrFirst(tracks, [](const AudioTrack&) { return true; });
    size_t number = 0;
    const char* end = wish->data() + wish->size();
    const auto parsed = std::from_chars(wish->data(), end, number);
    if (parsed.ec == std::errc() && parsed.ptr == end)
        return number < tracks.size() ? std::optional(number) : std::nullopt;
    const std::string language = canonicalLanguage(*wish);
    if (language.empty()) return std::nullopt;
    return defaultOrFirst(
        tracks, [&](const AudioTrack& track) { return canonicalLanguage(track.language) == language; });
}

std::string listOf(const std::vector<AudioTrack>& tracks) {
    std::string list;
    for (size_t i = 0; i < tracks.size(); ++i) {
        std::string details = tracks[i].language;
        if (tracks[i].is_default) details += details.empty() ? "default" : ", default";
        list += (i == 0 ? "" : ", ") + std::to_string(i) + (details.empty() ? "" : " (" + details + ")");
    }
    return list;
}

}  // namespace sonivex_tool
