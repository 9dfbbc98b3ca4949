#include "batch_plan.h"

#include <filesystem>
#include <system_error>
#include <unordered_map>

#include "absolute_path.h"
#include "failure.h"
#include "media_names.h"

namespace sonivex_tool {
namespace {

namespace fs = std::filesystem;

// The one path of a file that may not exist yet; links are followed.
std::string canonical(const std::string& path) {
    std::error_code error;
    const fs::path absolute = absolutePath(path);
    const fs::path result = fs::weakly_canonical(absolute, error);
    return error ? absolute.lexically_normal().string() : result.string();
}

BatchItem itemOf(const ListEntry& entry, const BatchSettings& settings) {
    BatchItem item{.input = entry.input, .name = entry.output, .output = {}};
    if (item.name.empty())
        item.name = (fs::path(entry.folder) / outputName(entry.input, settings.extension)).string();
    item.name = fs::path(item.name).lexically_normal().string();
    item.output = (fs::path(settings.output_folder) / item.name).string();
    for (std::string* path : {&item.input, &item.output}) {
        if (path->front() == '-') path->insert(0, "./");
    }
    return item;
}

void checkOutputs(const std::vector<BatchItem>& items) {
    std::unordered_map<std::string, const BatchItem*> writers;  // by the output's canonical path
    for (const BatchItem& item : items) {
        const auto [other, is_new] = writers.emplace(canonical(item.output), &item);
        if (is_new) continue;
        throw Failure(ExitCode::Usage, "\"" + other->second->input + "\" and \"" + item.input +
                                           "\" would have the same output \"" + item.output +
                                           "\"; give them names in the list, after a tab");
    }
    for (const BatchItem& item : items) {
        const auto writer = writers.find(canonical(item.input));
        if (writer == writers.end()) continue;
        throw Failure(ExitCode::Usage, "the output \"" + writer->second->output +
                                           "\" is one of the inputs; choose another --output-folder");
    }
}

}  // namespace

std::string outputName(const std::string& input, const std::string& extension) {
    const fs::path path(input);
    std::string chosen = extension;
    if (chosen.empty()) {
        chosen = path.extension().string();
        if (!chosen.empty()) chosen.erase(0, 1);
        if (!isWritableExtension(chosen)) chosen = "wav";
    }
    return path.stem().string() + "." + chosen;
}

std::vector<BatchItem> planBatch(const std::vector<ListEntry>& entries, const BatchSettings& settings) {
    std::vector<BatchItem> items;
    items.reserve(entries.size());
    for (const ListEntry& entry : entries) items.push_back(itemOf(entry, settings));
    checkOutputs(items);
    std::vector<BatchItem> share;
    const auto step = static_cast<size_t>(settings.shard.count);
    for (size_t i = static_cast<size_t>(settings.shard.number) - 1; i < items.size(); i += step)
        share.push_back(items[i]);
    return share;
}

}  // namespace sonivex_tool
