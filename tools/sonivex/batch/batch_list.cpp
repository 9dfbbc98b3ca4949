#include "batch_list.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <sstream>
#include <system_error>

#include "failure.h"
#include "interrupt.h"
#include "media_names.h"

namespace sonivex_tool {
namespace {

namespace fs = std::filesystem;

constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";
constexpr size_t kLongestLine_bytes = 16384;  // two paths of the longest kind that the system opens
// A list without an end, such as a pipe, must not take all memory. An entry takes some hundred bytes beside
// its names, so a list of short names needs a limit of its own.
constexpr size_t kLongestList_bytes = size_t{64} << 20;
constexpr size_t kMostEntries = 1'000'000;

Failure badLine(const std::string& list, size_t number, const std::string& why) {
    return {ExitCode::Usage, "line " + std::to_string(number) + " of \"" + list + "\" " + why};
}

// Says what is wrong with an output's name; empty: nothing.
std::string faultOfOutput(const std::string& output) {
    const fs::path path(output);
    if (path.is_absolute()) return "names an output outside the output folder: \"" + output + "\"";
    for (const fs::path& part : path) {
        if (part == "..") return "names an output outside the output folder: \"" + output + "\"";
    }
    const std::string file = path.filename().string();
    if (file.empty() || file == ".") return "names no output file after the tab";
    return {};
}

ListEntry parseLine(const std::string& line, const std::string& list, size_t number) {
    if (line.find('\0') != std::string::npos)
        throw badLine(list, number, "holds a null byte; a list is a text file");
    const size_t tab = line.find('\t');
    ListEntry entry{.input = line.substr(0, tab), .output = {}, .folder = {}};
    if (entry.input.empty()) throw badLine(list, number, "has no input before the tab");
    if (tab == std::string::npos) return entry;
    entry.output = line.substr(tab + 1);
    if (entry.output.find('\t') != std::string::npos) throw badLine(list, number, "has more than one tab");
    const std::string fault = faultOfOutput(entry.output);
    if (!fault.empty()) throw badLine(list, number, fault);
    return entry;
}

bool isHidden(const fs::path& path) {
    const std::string name = path.filename().string();
    return !name.empty() && name.front() == '.';
}

Failure unreadable(const std::string& path, const std::string& why) {
    return {ExitCode::InputNotReadable, "cannot read \"" + path + "\": " + why};
}

}  // namespace

std::vector<ListEntry> parseList(std::istream& lines, const std::string& name) {
    std::vector<ListEntry> entries;
    size_t number = 0;
    for (std::string line; std::getline(lines, line);) {
        ++number;
        if (number == 1 && line.rfind(kByteOrderMark, 0) == 0) line.erase(0, sizeof kByteOrderMark - 1);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty()) continue;
        if (line.size() > kLongestLine_bytes) throw badLine(name, number, "is too long for a file's name");
        if (entries.size() == kMostEntries) {
            throw badLine(
                name, number,
                "is one too many: a list names at most " + std::to_string(kMostEntries) + " inputs");
        }
        entries.push_back(parseLine(line, name, number));
    }
    return entries;
}

std::vector<ListEntry> listFolder(const std::string& folder, const std::string& output_folder) {
    std::error_code error;
    const fs::path left_out = fs::weakly_canonical(output_folder, error);
    std::vector<ListEntry> entries;
    fs::recursive_directory_iterator entry(folder, error);
    if (error) throw unreadable(folder, error.message());
    while (entry != fs::recursive_directory_iterator()) {
        const fs::path& path = entry->path();
        std::error_code gone;  // a file that disappears meanwhile is not listed
        if (isHidden(path)) {
            entry.disable_recursion_pending();
        } else if (entry->is_directory(gone)) {
            if (fs::weakly_canonical(path, gone) == left_out) entry.disable_recursion_pending();
        } else if (entry->is_regular_file(gone) && looksLikeMedia(path.string())) {
            entries.push_back({.input = path.string(),
                               .output = {},
                               .folder = path.parent_path().lexically_relative(folder).string()});
        }
        entry.increment(error);
        if (error) throw unreadable(folder, error.message());
    }
    std::sort(entries.begin(), entries.end(),
              [](const ListEntry& a, const ListEntry& b) { return a.input < b.input; });
    return entries;
}

namespace {

// A descriptor that is closed at the end of its scope.
class ListFile {
  public:
    explicit ListFile(const std::string& path) {
        while (true) {
            descriptor_ = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
            if (descriptor_ >= 0) return;
            if (errno != EINTR) throw unreadable(path, std::strerror(errno));
            throwIfInterrupted();
        }
    }
    ~ListFile() { (void)::close(descriptor_); }
    ListFile(const ListFile&) = delete;
    ListFile& operator=(const ListFile&) = delete;
    int descriptor() const { return descriptor_; }

  private:
    int descriptor_ = -1;
};

// A stream would take an interrupted or failed read for the end of the list.
std::string readText(int descriptor, const std::string& name) {
    std::string text;
    std::array<char, 65536> piece{};
    while (true) {
        const ssize_t count = ::read(descriptor, piece.data(), piece.size());
        if (count == 0) return text;
        if (count < 0 && errno != EINTR) throw unreadable(name, std::strerror(errno));
        throwIfInterrupted();
        if (count > 0) text.append(piece.data(), static_cast<size_t>(count));
        if (text.size() > kLongestList_bytes) {
            throw Failure(ExitCode::Usage, "\"" + name + "\" is longer than " +
                                               std::to_string(kLongestList_bytes >> 20) +
                                               " MiB, the most that a list may be");
        }
    }
}

std::vector<ListEntry> readEntries(int descriptor, const std::string& name) {
    std::istringstream lines(readText(descriptor, name));
    return parseList(lines, name);
}

}  // namespace

std::vector<ListEntry> readList(const std::string& list, const std::string& output_folder) {
    std::error_code error;
    std::vector<ListEntry> entries;
    if (list == "-") {
        entries = readEntries(STDIN_FILENO, "standard input");
        if (entries.empty()) throw unreadable("standard input", "it names no file");
    } else if (fs::is_directory(list, error)) {
        if (fs::weakly_canonical(list, error) == fs::weakly_canonical(output_folder, error)) {
            throw Failure(ExitCode::Usage,
                          "the output folder \"" + output_folder + "\" is the folder of the inputs");
        }
        entries = listFolder(list, output_folder);
        if (entries.empty()) throw unreadable(list, "the folder has no media files");
    } else {
        const ListFile file(list);
        entries = readEntries(file.descriptor(), list);
        if (entries.empty()) throw unreadable(list, "the list names no file");
    }
    return entries;
}

}  // namespace sonivex_tool
