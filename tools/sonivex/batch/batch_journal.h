#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "batch_settings.h"
#include "file_stamp.h"

namespace sonivex_tool {

/** Everything that one output depends on, and the output itself. */
struct FinishedFile {
    std::string name;   // of the output, relative to the output folder
    std::string input;  // absolute path
    FileStamp input_stamp;
    FileStamp output_stamp;
    int exit_code = 0;  // of its process: 0, or a code that comes with a complete output
};

/** The state of a batch, in the output folder: which outputs were begun, which are finished, and from what.
 *
 * Each shard appends lines of JSON to a file of its own; all shards' files are read at the beginning. A line
 * is a fact that stays true, so a line that a crash cut off costs only that fact. An output counts as
 * finished if some line still agrees with its input, its options and itself.
 *
 *   .sonivex-batch.jsonl            a whole list
 *   .sonivex-batch-2-of-8.jsonl     a shard
 *
 * The object holds a lock: nobody else may work on the same shard, nor on the whole list while a shard is at
 * work. */
class BatchJournal {
  public:
    /** Opens or creates the state file, takes the lock and reads all state files of the folder.
     *  @param folder the output folder, which exists
     *  @param basis what all outputs depend on: options, version, plug-in; compared as a whole
     *  @throw Failure (OutputNotWritable, NoSpace) */
    BatchJournal(const std::string& folder, const Shard& shard, std::vector<std::string> basis);
    ~BatchJournal();
    BatchJournal(const BatchJournal&) = delete;
    BatchJournal& operator=(const BatchJournal&) = delete;

    /** Returns the exit code with which the output was finished, or nothing if it is not. */
    std::optional<int> exitCodeOf(const FinishedFile& file) const;
    /** Returns true if a batch has begun or finished this output before. */
    bool knows(const std::string& name) const;

    /** Records that the output is about to be rendered; the record is on the disk when this returns.
     *  @throw Failure (OutputNotWritable, NoSpace) */
    void addBegun(const std::string& name);
    /** Records a finished output; the record is on the disk when this returns.
     *  @throw Failure (OutputNotWritable, NoSpace) */
    void addFinished(const FinishedFile& file);

    /** Notes for the user about the state files, such as lines that cannot be read. */
    const std::vector<std::string>& notes() const { return notes_; }

  private:
    void lock(int descriptor, int operation);
    int openFile(const std::string& path) const;
    void readAll(const std::string& folder);
    void readFile(const std::string& path);
    bool takeLine(std::string_view line);
    void append(const std::string& line);

    std::string path_;  // of the own state file
    std::vector<std::string> basis_;
    std::unordered_set<std::string> finished_;  // the lines, in their only spelling
    std::unordered_set<std::string> known_;     // outputs' names, as JSON
    std::vector<std::string> notes_;
    int descriptor_ = -1;
    int whole_list_descriptor_ = -1;  // of the whole list's state file, for the lock of a shard
};

/** Returns the name of a shard's state file. */
std::string journalName(const Shard& shard);

}  // namespace sonivex_tool
