// State files of a batch. The input is the file as the batch finds it, in memory of its own. The journal must
// take every file, remember what is added to it, and read its own lines back.

#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "batch_journal.h"
#include "failure.h"
#include "support/promise.h"

namespace {

using fuzz::require;
using sonivex_tool::BatchJournal;
using sonivex_tool::FinishedFile;

/** A folder in memory where there is one, for one process. */
const std::string& folder() {
    static const std::string path = [] {
        std::string made =
            std::filesystem::exists("/dev/shm") ? "/dev/shm/sonivex-fuzz-XXXXXX" : "/tmp/sonivex-fuzz-XXXXXX";
        require(mkdtemp(made.data()) != nullptr, "a folder for the state file can be made");
        static std::string kept = made;
        std::atexit([] {
            std::error_code error;
            std::filesystem::remove_all(kept, error);
        });
        return made;
    }();
    return path;
}

FinishedFile fileNamed(const std::string& name) {
    return {.name = name,
            .input = "/in/" + name,
            .input_stamp = {12, 34},
            .output_stamp = {56, 78},
            .exit_code = 0};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string path = folder() + "/" + sonivex_tool::journalName({});
    const std::string text(reinterpret_cast<const char*>(bytes), size);
    std::ofstream(path, std::ios::binary) << text;

    // A name out of the file's own bytes, which need not be UTF-8.
    const std::string odd_name = text.substr(0, 20) + "!";
    const std::vector<std::string> basis = {"options", odd_name};
    try {
        {
            BatchJournal journal(folder(), {}, basis);
            (void)journal.exitCodeOf(fileNamed("a.wav"));
            (void)journal.knows("a.wav");
            journal.addBegun("begun.wav");
            journal.addFinished(fileNamed(odd_name));
            require(journal.knows(odd_name) && journal.exitCodeOf(fileNamed(odd_name)) == 0,
                    "a journal knows what it wrote");
        }
        const BatchJournal again(folder(), {}, basis);
        require(again.knows("begun.wav"), "an output that was begun is known");
        require(again.exitCodeOf(fileNamed(odd_name)) == 0, "an output that was finished stays so");
        FinishedFile changed = fileNamed(odd_name);
        changed.input_stamp.mtime_ns += 1;
        require(!again.exitCodeOf(changed), "a changed input is rendered again");
    } catch (const sonivex_tool::Failure& failure) {
        require(false, failure.what());
    }
    std::filesystem::remove(path);
    return 0;
}
