#include "metadata.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <string_view>

namespace sonivex_tool {
namespace {

// Tags that describe the file rather than the recording; letter case does not matter.
constexpr std::array<std::string_view, 10> kAboutTheFile = {
    "encoder",  "major_brand", "minor_version", "compatible_brands", "handler_name", "vendor_id",
    "iTunSMPB", "duration",    "bps",           "itunnorm"};

// Prefixes of such tags: loudness figures, and the statistics that Matroska muxers write.
constexpr std::array<std::string_view, 4> kPrefixesAboutTheFile = {"replaygain_", "r128_", "_statistics_",
                                                                   "number_of_"};

std::string lowerCase(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

bool isAboutTheFile(const std::string& key) {
    const std::string lower = lowerCase(key);
    // Matroska writes its statistics once per language: "DURATION-eng".
    const std::string name = lower.substr(0, lower.find('-'));
    const auto is_name = [&](std::string_view tag) { return lowerCase(tag) == name; };
    const auto is_prefix = [&](std::string_view prefix) { return lower.starts_with(prefix); };
    return std::any_of(kAboutTheFile.begin(), kAboutTheFile.end(), is_name) ||
           std::any_of(kPrefixesAboutTheFile.begin(), kPrefixesAboutTheFile.end(), is_prefix);
}

void copyTags(const AVDictionary* from, AVDictionary** to) {
    const AVDictionaryEntry* tag = nullptr;
    while ((tag = av_dict_get(from, "", tag, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
        if (!isAboutTheFile(tag->key)) av_dict_set(to, tag->key, tag->value, AV_DICT_DONT_OVERWRITE);
    }
}

}  // namespace

void copyMetadata(const AVFormatContext& source, const AVStream& source_stream, AVFormatContext& output,
                  AVStream& output_stream) {
    output_stream.disposition = source_stream.disposition & ~AV_DISPOSITION_ATTACHED_PIC;
    copyTags(source.metadata, &output.metadata);
    copyTags(source_stream.metadata, &output_stream.metadata);

    // Ogg stores title and artist with the stream, most other formats with the file. The Ogg muxer takes the
    // tags of the file into each stream by itself.
    const bool is_from_ogg = std::string_view(source.iformat->name) == "ogg";
    if (is_from_ogg) copyTags(source_stream.metadata, &output.metadata);
}

void copyStreamMetadata(const AVStream& source, AVStream& output) {
    output.disposition = source.disposition;
    const AVDictionaryEntry* encoder = av_dict_get(source.metadata, "encoder", nullptr, 0);
    if (encoder != nullptr) av_dict_set(&output.metadata, "encoder", encoder->value, 0);  // still true
    copyTags(source.metadata, &output.metadata);
}

}  // namespace sonivex_tool
