// Lists of a batch. The input is the list; the plan of its outputs goes to a folder that does not exist.

#include <cstdint>
#include <filesystem>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "batch_list.h"
#include "batch_plan.h"
#include "failure.h"
#include "support/byte_stream.h"
#include "support/promise.h"

namespace {

using fuzz::require;
namespace fs = std::filesystem;

constexpr char kOutputFolder[] = "/nonexistent/out";

void requireSoundEntry(const sonivex_tool::ListEntry& entry) {
    require(!entry.input.empty(), "an entry names an input");
    for (const std::string* name : {&entry.input, &entry.output}) {
        require(name->find_first_of(std::string("\0\t\n", 3)) == std::string::npos,
                "a name has no separator in it");
    }
}

void requireSoundItem(const sonivex_tool::BatchItem& item) {
    require(!item.input.empty() && item.input.front() != '-', "an input never looks like an option");
    const fs::path within = fs::path(item.output).lexically_normal().lexically_relative(kOutputFolder);
    require(!within.empty() && within != "." && *within.begin() != "..",
            "an output stays in the output folder");
}

/** Writes entries as a list again. */
std::string listOf(const std::vector<sonivex_tool::ListEntry>& entries) {
    std::string text;
    for (const auto& entry : entries) {
        // A first line is not to begin with a byte-order mark, and no line to end with a return that would be
        // cut off.
        text += "\n" + entry.input + (entry.output.empty() ? "" : "\t" + entry.output) + "\r";
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    try {
        std::istringstream lines(text);
        const auto entries = sonivex_tool::parseList(lines, "list");
        for (const auto& entry : entries) requireSoundEntry(entry);

        std::istringstream printed(listOf(entries));
        const auto again = sonivex_tool::parseList(printed, "list");
        require(again.size() == entries.size(), "a printed list has the same entries");
        for (std::size_t i = 0; i < entries.size(); ++i) {
            require(again[i].input == entries[i].input && again[i].output == entries[i].output,
                    "a printed list has the same names");
        }

        sonivex_tool::BatchSettings settings;
        settings.output_folder = kOutputFolder;
        settings.extension = size % 2 == 0 ? "" : "flac";
        const auto items = sonivex_tool::planBatch(entries, settings);
        require(items.size() == entries.size(), "a whole plan has every entry");
        std::set<std::string> outputs;
        for (const auto& item : items) {
            requireSoundItem(item);
            require(outputs.insert(item.output).second, "no two inputs have the same output");
        }

        std::size_t shared = 0;
        settings.shard.count = 3;
        for (settings.shard.number = 1; settings.shard.number <= 3; ++settings.shard.number) {
            shared += sonivex_tool::planBatch(entries, settings).size();
        }
        require(shared == items.size(), "the shards have every entry once");
    } catch (const sonivex_tool::Failure& failure) {
        require(failure.what()[0] != '\0', "a refusal tells its reason");
    }
    return 0;
}
