#include "preset_files.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <optional>
#include <sstream>
#include <system_error>

#include "failure.h"
#include "nearest_word.h"
#include "write_errors.h"

namespace sonivex_tool {
namespace {

namespace fs = std::filesystem;

constexpr char kExtension[] = ".preset";
constexpr char kByteOrderMark[] = "\xEF\xBB\xBF";
constexpr uintmax_t kLongestPreset_bytes = 65536;

std::string fromEnvironment(const char* name) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): before any thread
    return value != nullptr ? value : "";
}

// The rules of XDG base directories ignore a relative $XDG_CONFIG_HOME.
std::optional<fs::path> userFolder() {
    fs::path base = fromEnvironment("XDG_CONFIG_HOME");
    if (!base.is_absolute()) {
        const fs::path home = fromEnvironment("HOME");
        if (!home.is_absolute()) return std::nullopt;
        base = home / ".config";
    }
    return base / "sonivex" / "presets";
}

bool isPath(const std::string& name) {
    return name.find('/') != std::string::npos;
}

std::string withoutExtension(const std::string& name) {
    const fs::path path = name;
    return path.extension() == kExtension ? path.stem().string() : name;
}

bool isRegularFile(const fs::path& path) {
    std::error_code error;
    return fs::is_regular_file(path, error);
}

std::string titleOf(const fs::path& path) {
    std::ifstream file(path);
    std::string line;
    if (!std::getline(file, line)) return {};
    if (line.starts_with(kByteOrderMark)) line.erase(0, sizeof kByteOrderMark - 1);
    if (line.empty() || line.front() != '#') return {};
    const size_t start = line.find_first_not_of("# \t");
    return start == std::string::npos ? std::string() : line.substr(start);
}

std::vector<fs::path> presetsIn(const fs::path& folder) {
    std::vector<fs::path> paths;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        const fs::path& path = entry->path();
        if (path.extension() == kExtension && isRegularFile(path)) paths.push_back(path);
    }
    return paths;
}

}  // namespace

std::vector<fs::path> presetFolders() {
    std::vector<fs::path> folders;
    std::istringstream listed(fromEnvironment("SONIVEX_PRESETS"));
    for (std::string folder; std::getline(listed, folder, ':');) {
        if (!folder.empty()) folders.emplace_back(folder);
    }
    if (const auto own = userFolder()) folders.push_back(*own);
    std::error_code error;
    const fs::path program = fs::read_symlink("/proc/self/exe", error);
    if (!error) folders.push_back(program.parent_path().parent_path() / "share" / "sonivex" / "presets");
    return folders;
}

std::vector<PresetFile> allPresets() {
    std::map<std::string, fs::path> found;
    for (const fs::path& folder : presetFolders()) {
        for (const fs::path& path : presetsIn(folder)) found.emplace(path.stem().string(), path);
    }
    std::vector<PresetFile> presets;
    presets.reserve(found.size());
    for (const auto& [name, path] : found) presets.push_back({name, titleOf(path), path});
    return presets;
}

fs::path findPreset(const std::string& name) {
    if (isPath(name)) return name;
    const std::string bare = withoutExtension(name);
    std::vector<std::string> names;
    for (const PresetFile& preset : allPresets()) {
        if (preset.name == bare) return preset.path;
        names.push_back(preset.name);
    }
    throw Failure(ExitCode::Usage, "unknown preset \"" + name + "\"" + didYouMean(bare, names) +
                                       " (\"sonivex render --list-presets\" shows all)");
}

fs::path savedPresetPath(const std::string& name) {
    if (isPath(name)) return name;
    const std::string bare = withoutExtension(name);
    if (bare.empty() || bare.front() == '.' || bare.front() == '-')
        throw Failure(ExitCode::Usage, "--save-preset: \"" + name + "\" is no name for a preset");
    const auto folder = userFolder();
    if (!folder) {
        throw Failure(ExitCode::Usage, "cannot save the preset \"" + name +
                                           "\": there is no home folder; give a path with a slash");
    }
    std::error_code error;
    fs::create_directories(*folder, error);
    if (error) {
        throw Failure(exitCodeOfWriteError(error.value()),
                      "cannot create the folder \"" + folder->string() + "\": " + error.message());
    }
    return *folder / (bare + kExtension);
}

std::string readPreset(const fs::path& path) {
    const auto refuse = [&](const std::string& why) {
        throw Failure(ExitCode::Usage, "cannot read the preset \"" + path.string() + "\": " + why);
    };
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) refuse(error ? error.message() : "no such file");
    if (!fs::is_regular_file(status)) refuse("it is not a file");
    const uintmax_t bytes = fs::file_size(path, error);
    if (error) refuse(error.message());
    if (bytes > kLongestPreset_bytes) refuse("it is longer than 64 KiB");
    std::ifstream file(path, std::ios::binary);
    if (!file) refuse("it cannot be opened");
    std::string text{std::istreambuf_iterator<char>(file), {}};
    if (text.starts_with(kByteOrderMark)) text.erase(0, sizeof kByteOrderMark - 1);
    if (text.find('\0') != std::string::npos) refuse("it is not a text file");
    return text;
}

}  // namespace sonivex_tool
