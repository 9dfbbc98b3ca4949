// Short texts of the user, of files and of the terminal. The input is a byte that selects the reader, then
// the text.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string>
#include <vector>

#include "audio_tracks.h"
#include "batch_plan.h"
#include "dump_name.h"
#include "ears.h"
#include "failure.h"
#include "fitted_text.h"
#include "key_reader.h"
#include "media_names.h"
#include "nearest_word.h"
#include "pcm_format.h"
#include "play_script.h"
#include "sample_format.h"
#include "support/byte_stream.h"
#include "support/promise.h"

namespace {

using fuzz::require;

void readScript(const std::string& text) {
    double last_s = 0.0;
    try {
        for (const auto& key : sonivex_tool::parseScript(text)) {
            require(std::isfinite(key.time_s) && key.time_s >= last_s, "the times of a script never fall");
            last_s = key.time_s;
        }
    } catch (const sonivex_tool::Failure& failure) {
        require(failure.exitCode() == sonivex_tool::ExitCode::Usage,
                "a wrong script is a mistake of the user");
    }
}

void readSegment(const std::string& text) {
    sonivex_tool::Segment segment;
    if (!sonivex_tool::parseSegment(text, segment)) return;
    require(segment.from_s >= 0.0 && segment.from_s < segment.to_s && std::isfinite(segment.to_s),
            "a segment begins before it ends");
}

void readFileName(const std::string& text) {
    if (const auto name = sonivex_tool::parseDumpName(text)) {
        require(name->path() == text, "the parts of a dump's name make the same name");
        require(name->partner().partner().path() == text, "a dump is its partner's partner");
    }
    (void)sonivex_tool::isPcmPath(text);
    (void)sonivex_tool::looksLikeMedia(text);
    (void)sonivex_tool::isWritableExtension(text);
    (void)sonivex_tool::extensionOfFormat(text);
    (void)sonivex_tool::outputName(text, "");
    const auto guess = sonivex_tool::guessPcmFormat("/nonexistent/" + text, {}, false);
    require(guess.format.channels >= 1 && guess.format.channels <= 8, "a guess has 1 to 8 channels");
}

void readNumbers(const std::string& text) {
    const auto channels = sonivex_tool::parseChannels(text);
    require(channels.size() <= 2, "there are two channel counts at most");
    for (const int count : channels) require(count >= 1 && count <= 8, "a channel count is 1 to 8");
    const auto format = sonivex_tool::sampleFormatNamed(text);
    if (format.format != AV_SAMPLE_FMT_NONE)
        require(sonivex_tool::nameOf(format) == text, "a format's name names it");
}

/** Reads the bytes of a terminal at once and one by one. */
void readKeys(const std::string& text) {
    sonivex_tool::KeyReader at_once;
    const auto keys = at_once.read(text);
    sonivex_tool::KeyReader byte_by_byte;
    std::vector<std::string> same_keys;
    for (const char byte : text) {
        for (const auto& key : byte_by_byte.read({&byte, 1})) same_keys.push_back(key);
    }
    require(keys == same_keys, "the keys do not depend on how the bytes arrive");
}

void fitLine(const std::string& text) {
    const int columns = text.empty() ? 0 : static_cast<unsigned char>(text.front()) % 100;
    const std::string fitted = sonivex_tool::fittedText(text, columns);
    require(fitted.size() <= text.size(), "a line becomes no longer");
    for (const char byte : fitted)
        require((byte < 0 || byte >= ' ') && byte != 0x7F, "a line has no control character");
    require(sonivex_tool::fittedText(fitted, columns) == fitted, "a line that fits stays as it is");
    for (const char byte : sonivex_tool::asOneLine(text)) {
        require((byte < 0 || byte >= ' ') && byte != 0x7F, "a tag has no control character");
    }
}

void mistype(const std::string& text) {
    static const std::vector<std::string> words = {
        "surround", "dialogue", "normalizer", "3DSurround", "MegaBass", "a", ""};
    const auto nearest = sonivex_tool::nearestWord(text, words);
    if (!nearest) return;
    require(std::find(words.begin(), words.end(), *nearest) != words.end(),
            "the nearest word is one of the words");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    fuzz::ByteStream stream(bytes, size);
    const int reader = stream.byte();
    const std::string text(stream.restOfText());
    switch (reader % 7) {
        case 0:
            readScript(text);
            break;
        case 1:
            readSegment(text);
            break;
        case 2:
            readFileName(text);
            break;
        case 3:
            readNumbers(text);
            break;
        case 4:
            readKeys(text);
            break;
        case 5:
            fitLine(text);
            break;
        default:
            mistype(text);
    }
    return 0;
}
