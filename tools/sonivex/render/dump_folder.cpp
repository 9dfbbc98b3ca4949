#include "dump_folder.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iterator>

#include "dump_name.h"
#include "failure.h"
#include "vorlin/global_settings.h"

namespace sonivex_tool {
namespace {

constexpr char kDumpFolderProperty[] = "protected.network.cache.local.saveDir";

}  // namespace

DumpFolder::DumpFolder(const std::string& path) : path_(path) {
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    const bool is_folder = std::filesystem::is_directory(status);
    if (!is_folder || access(path.c_str(), W_OK | X_OK) != 0) {
        const std::string reason = std::filesystem::exists(status) && !is_folder
                                       ? "it is not a folder"
                                       : std::strerror(error ? error.value() : errno);
        throw Failure(ExitCode::OutputNotWritable, "cannot write to --dump \"" + path + "\": " + reason);
    }
    old_files_ = dumpFiles();
    Vorlin::globalSettings::GetInstance().setProperty(kDumpFolderProperty, path);
}

std::set<std::string> DumpFolder::dumpFiles() const {
    std::set<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(path_, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (parseDumpName(name)) names.insert(name);
    }
    return names;
}

std::vector<std::string> DumpFolder::newFiles() const {
    const std::set<std::string> all = dumpFiles();
    std::vector<std::string> names;
    std::set_difference(all.begin(), all.end(), old_files_.begin(), old_files_.end(),
                        std::back_inserter(names));
    return names;
}

uint64_t DumpFolder::newBytes(bool is_input) const {
    uint64_t bytes = 0;
    for (const std::string& name : newFiles()) {
        if (parseDumpName(name)->is_input != is_input) continue;
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(std::filesystem::path(path_) / name, error);
        if (!error) bytes += size;
    }
    return bytes;
}

}  // namespace sonivex_tool
