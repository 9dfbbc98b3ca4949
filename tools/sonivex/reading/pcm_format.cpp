#include "pcm_format.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>

#include "dump_name.h"

namespace sonivex_tool {
namespace {

constexpr int kSurroundOutputs = 2;
constexpr int kDialogueChannels = 2;

// Channel count of surround's input, from the sizes of the input and output files, which hold equally many
// frames.
std::optional<int> surroundInputs(const DumpName& input) {
    std::error_code error;
    const std::uintmax_t input_bytes = std::filesystem::file_size(input.path(), error);
    if (error) return std::nullopt;
    const std::uintmax_t output_bytes = std::filesystem::file_size(input.partner().path(), error);
    if (error || output_bytes == 0) return std::nullopt;
    for (const int channels : std::array{1, 2, 6, 8}) {
        if (input_bytes * kSurroundOutputs == output_bytes * static_cast<std::uintmax_t>(channels))
            return channels;
    }
    return std::nullopt;
}

// Channel count that follows from a dump file's name, alone or with the sizes of both files of its session.
std::optional<int> channelsByName(const DumpName& name) {
    if (name.effect == "dialoguenhance") return kDialogueChannels;
    if (name.effect != "surround") return std::nullopt;
    return name.is_input ? surroundInputs(name) : kSurroundOutputs;
}

}  // namespace

std::vector<int> parseChannels(const std::string& text) {
    constexpr std::size_t kMaxNumbers = 2;
    std::vector<int> numbers;
    for (std::size_t at = 0; at <= text.size(); at += 2) {
        const bool is_number = at < text.size() && text[at] >= '1' && text[at] <= '8';
        const bool is_separated = at + 1 == text.size() || (at + 1 < text.size() && text[at + 1] == ',');
        if (!is_number || !is_separated || numbers.size() == kMaxNumbers) return {};
        numbers.push_back(text[at] - '0');
        if (at + 1 == text.size()) break;
    }
    return numbers;
}

bool isPcmPath(const std::string& path) {
    return std::filesystem::path(path).extension() == ".pcm";
}

PcmGuess guessPcmFormat(const std::string& path, const PcmHints& hints, bool is_output) {
    PcmGuess guess;
    const auto name = parseDumpName(path);
    if (name) is_output = !name->is_input;
    const std::size_t place = is_output ? 1 : 0;
    const auto by_name = name ? channelsByName(*name) : std::nullopt;
    if (place < hints.channels.size()) {
        guess.format.channels = hints.channels[place];
    } else if (by_name) {
        guess.format.channels = *by_name;
    } else if (!hints.channels.empty()) {
        guess.format.channels = hints.channels.front();
    } else {
        guess.assumptions.push_back(std::to_string(guess.format.channels) + " channels");
    }
    if (guess.assumptions.empty()) guess.format.broken_end = name ? BrokenEnd::CutOff : BrokenEnd::NoPcm;
    if (hints.rate_hz) {
        guess.format.rate_hz = *hints.rate_hz;
    } else {
        guess.assumptions.push_back(std::to_string(guess.format.rate_hz) + " Hz");
    }
    return guess;
}

}  // namespace sonivex_tool
