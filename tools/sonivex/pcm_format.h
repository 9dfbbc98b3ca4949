#pragma once

#include <optional>
#include <string>
#include <vector>

namespace sonivex_tool {

/** What a part of a frame at a file's end means. */
enum class BrokenEnd {
    WrongAssumption,  // the number of channels was but assumed
    NoPcm,            // the user has named it, so this is no such file
    CutOff,           // whoever dumped it was stopped, or the disk was full
};

/** What a file of bare samples does not say of itself. */
struct PcmFormat {
    int channels = 2;
    int rate_hz = 48000;
    BrokenEnd broken_end = BrokenEnd::WrongAssumption;
};

/** What the user says of such files. */
struct PcmHints {
    std::vector<int> channels;   // of what goes into an effect, then of what comes out; may be shorter
    std::optional<int> rate_hz;  // of all of them
};

/** How to read a file of bare samples, and what of it is no more than an assumption. */
struct PcmGuess {
    PcmFormat format;
    std::vector<std::string> assumptions;  // "48000 Hz", "2 channels"
};

/** Read "N" or "N,M", numbers of channels from 1 to 8; nothing when it is anything else. */
std::vector<int> parseChannels(const std::string& text);

/** Whether `path` is a file of bare 16-bit samples by its extension, ".pcm". */
bool isPcmPath(const std::string& path);

/** Work out how to read the dump file `path`: from the hints, from its name, from the sizes of both files of
 *  its session (both hold equally many frames), or else by assumption.
 *  @param is_output whether it is the second of a pair; a dump file's own name goes first. */
PcmGuess guessPcmFormat(const std::string& path, const PcmHints& hints, bool is_output);

}  // namespace sonivex_tool
