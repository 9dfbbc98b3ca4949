#pragma once

#include <string>
#include <vector>

namespace sonivex_tool {

/** Most processes that a batch may run at once. */
constexpr int kMostJobs = 256;
/** Most shards that a list may be cut into. */
constexpr int kMostShards = 1'000'000;

/** One share of a list: the entries `number`, `number` + `count`, `number` + 2 `count` and so on. */
struct Shard {
    int number = 1;  // 1 to count
    int count = 1;   // 1: the whole list
};

/** The part of the command line of `render` that concerns many files. */
struct BatchSettings {
    std::string list;           // a text file, a folder, or "-" for standard input
    std::string output_folder;  // made if it does not exist
    std::string extension;      // of the outputs, without the dot; empty: the input's own
    int jobs = 1;               // files rendered at once, 1 to kMostJobs
    Shard shard;
    bool replace_output = false;  // replace files that no state file knows
    bool verbose = false;         // show the messages of each file's process

    std::vector<std::string> options;    // arguments for each file's process
    std::vector<std::string> key_files;  // files whose change makes every output outdated: the plug-in and
                                         // the files that options name
};

}  // namespace sonivex_tool
