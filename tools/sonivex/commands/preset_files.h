// The files of presets and where they are searched for.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace sonivex_tool {

/** A preset as `--list-presets` shows it. */
struct PresetFile {
    std::string name;   // of the file, without its extension
    std::string title;  // its first comment line without the '#'; empty if it does not begin with one
    std::filesystem::path path;
};

/** Returns the folders in which a preset is searched for, the first one first: those of $SONIVEX_PRESETS,
 *  the user's own, and the one that is installed with the program. They need not exist. */
std::vector<std::filesystem::path> presetFolders();

/** Returns all presets of presetFolders(), sorted by name. Of two with the same name only the one that
 *  findPreset() finds is among them. */
std::vector<PresetFile> allPresets();

/** Returns the file of a preset.
 *  @param name a path if it contains a slash; otherwise a name, which may end with ".preset".
 *  @throw Failure (Usage) if there is no such preset */
std::filesystem::path findPreset(const std::string& name);

/** Returns the file into which a preset of that name is saved, in the user's own folder, and creates that
 *  folder. A path with a slash is returned as it is.
 *  @throw Failure (Usage, OutputNotWritable) */
std::filesystem::path savedPresetPath(const std::string& name);

/** Returns the contents of a preset's file. @throw Failure (Usage) if it cannot be read or is no text */
std::string readPreset(const std::filesystem::path& path);

}  // namespace sonivex_tool
