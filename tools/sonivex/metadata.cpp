#include "metadata.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string>
#include <string_view>

namespace sonivex_tool {
namespace {

constexpr std::array<std::string_view, 10> kAboutTheFile = {
    "encoder",  "major_brand", "minor_version", "compatible_brands", "handler_name", "vendor_id",
    "iTunSMPB", "duration",    "bps",           "itunnorm"};

// Loudness figures, and statistics that one muxer writes.
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
    // Matroska writes its figures once per language: "DURATION-eng".
    const std::string name = lower.substr(0, lower.find('-'));
    const auto isName = [&](std::string_view tag) { return lowerCase(tag) == name; };
    const auto isPrefix = [&](std::string_view prefix) { return lower.starts_with(prefix); };
    return std::any_of(kAboutTheFile.begin(), kAboutTheFile.end(), isName) ||
           std::any_of(kPrefixesAboutTheFile.begin(), kPrefixesAboutTheFile.end(), isPrefix);
}

void copyTags(const AVDictionary* from, AVDictionary** to) {
    const AVDictionaryEntry* tag = nullptr;
    while ((tag = av_dict_get(from, "", tag, AV_DICT_IGNORE_SUFFIX)) != nullptr) {
        if (!isAboutTheFile(tag->key)) av_dict_set(to, tag->key, tag->value, AV_DICT_DONT_OVERWRITE);
    }
}

}  // namespace

void copyMetadata(const AVFormatContext& source, const AVStream& sourceStream, AVFormatContext& output,
                  AVStream& outputStream) {
    outputStream.disposition = sourceStream.disposition & ~AV_DISPOSITION_ATTACHED_PIC;
    copyTags(source.metadata, &output.metadata);
    copyTags(sourceStream.metadata, &outputStream.metadata);

    // Ogg keeps title and artist with the stream, most others with the file, and few muxers write both.
    const bool isFromOgg = std::string_view(source.iformat->name) == "ogg";
    if (isFromOgg) copyTags(sourceStream.metadata, &output.metadata);
    const std::string_view muxer = output.oformat->name;
    const bool isToOgg = muxer == "ogg" || muxer == "oga" || muxer == "opus" || muxer == "spx";
    if (isToOgg) copyTags(source.metadata, &outputStream.metadata);
}

}  // namespace sonivex_tool
