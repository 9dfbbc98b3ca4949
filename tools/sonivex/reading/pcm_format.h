#pragma once

#include <optional>
#include <string>
#include <vector>

namespace sonivex_tool {

/** Meaning of an incomplete frame at the end of a file. */
enum class BrokenEnd {
    WrongAssumption,  // the channel count was only assumed and is probably wrong
    NoPcm,            // the user gave the channel count, so the file is not of that format
    CutOff,           // the dump was cut off: the program was stopped, or the disk was full
};

/** Format of a file of bare samples, which has no header to state it. */
struct PcmFormat {
    int channels = 2;
    int rate_hz = 48000;
    BrokenEnd broken_end = BrokenEnd::WrongAssumption;
};

/** Hints from the user about files of bare samples. */
struct PcmHints {
    std::vector<int> channels;   // of an effect's input, then of its output; may hold fewer
    std::optional<int> rate_hz;  // of all files, in Hz
};

/** The format to read a file of bare samples with, and which parts of it are assumptions. */
struct PcmGuess {
    PcmFormat format;
    std::vector<std::string> assumptions;  // "48000 Hz", "2 channels"
};

/** Parses "N" or "N,M", channel counts from 1 to 8. Returns an empty list for any other text. */
std::vector<int> parseChannels(const std::string& text);

/** Returns true if the extension of `path` is ".pcm", which stands for bare 16-bit samples. */
bool isPcmPath(const std::string& path);

/** Works out the format of the file `path` from the hints, from its name, from the sizes of both files of its
 * dump session (they hold equally many frames), or else by assumption.
 * @param is_output true if the file is an effect's output; the name of a dump file overrides this */
PcmGuess guessPcmFormat(const std::string& path, const PcmHints& hints, bool is_output);

}  // namespace sonivex_tool
