#pragma once

#include <istream>
#include <string>
#include <vector>

namespace sonivex_tool {

/** One input of a batch. */
struct ListEntry {
    std::string input;   // as listed
    std::string output;  // relative to the output folder; empty: it follows from the input's name
    std::string
        folder;  // sub-folder of the output folder for a name that follows from the input's; may be empty
};

/** Reads a list: one input per line, or an input, a tab and the name of its output.
 *
 * Empty lines are left out. A carriage return at the end of a line and a byte-order mark at the beginning are
 * not part of a name. Relative inputs refer to the working directory.
 * @param name of the list, for messages
 * @throw Failure (Usage) for a line without an input, with a second tab, with a null byte, or with an output
 * that is absolute, leads out of the output folder, or names no file; also for more than a million inputs */
std::vector<ListEntry> parseList(std::istream& lines, const std::string& name);

/** Lists the media files in a folder and in its sub-folders, in the order of their paths. Hidden files and
 *  folders are left out, and so is `output_folder` with everything in it. Links to folders are not followed.
 *  @throw Failure (InputNotReadable) if a folder cannot be read */
std::vector<ListEntry> listFolder(const std::string& folder, const std::string& output_folder);

/** Reads the list that the user named: a folder, a text file, or "-" for standard input.
 *  @throw Failure (Usage, InputNotReadable); an empty list is not readable either, and a list of more than
 *  64 MiB is refused (Usage). Also if a signal is pending (interrupt.h) */
std::vector<ListEntry> readList(const std::string& list, const std::string& output_folder);

}  // namespace sonivex_tool
