#include "plugin_search.h"

#include <filesystem>
#include <system_error>
#include <vector>

#include "failure.h"
#include "vorlin/filter_prototype.h"

namespace sonivex_tool {
namespace {

constexpr char kPluginFile[] = "libSonivexFilter.so";

std::vector<std::filesystem::path> placesBesideProgram() {
    std::error_code error;
    const std::filesystem::path program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (error) return {};
    const std::filesystem::path folder = program.parent_path();
    return {folder / kPluginFile, folder.parent_path() / "lib" / kPluginFile};
}

// The loader looks up a name without a slash on the system's search path. A user who names an existing file
// means that file.
std::string asPath(const std::string& path) {
    std::error_code error;
    if (path.find('/') == std::string::npos && std::filesystem::exists(path, error)) return "./" + path;
    return path;
}

}  // namespace

std::string findPluginFile(const std::string& path) {
    if (!path.empty()) return asPath(path);
    std::error_code error;
    for (const auto& place : placesBesideProgram()) {
        if (std::filesystem::exists(place, error)) return place.string();
    }
    return kPluginFile;
}

std::shared_ptr<Vorlin::Plugin> loadPlugin(const std::string& path) {
    const std::string chosen = findPluginFile(path);
    std::string why;
    auto plugin = Vorlin::Plugin::load(chosen, why);
    if (plugin == nullptr) throw Failure(ExitCode::PluginNotFound, "cannot load the plug-in: " + why);
    if (!Vorlin::filterPrototype::isRegistered(kFilterName)) {
        throw Failure(
            ExitCode::PluginNotFound,
            "cannot use the plug-in \"" + chosen + "\": it contains no filter named \"" + kFilterName + "\"");
    }
    return plugin;
}

}  // namespace sonivex_tool
