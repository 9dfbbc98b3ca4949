#pragma once

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "batch_settings.h"
#include "console.h"
#include "result_stream.h"

namespace sonivex_tool {

struct RenderChoices;

/** The options of `render` for many files. */
class BatchOptions {
  public:
    /** Adds the options to the command `render`, after all others. The others are passed on to each file's
     *  process as they were typed.
     *  @param command both it and this object stay where they are */
    void addTo(CLI::App& command);

    /** Returns true if --batch is given. IN and OUT are not given then. */
    bool isChosen() const { return !settings_.list.empty(); }

    /** Renders the files.
     *  @param key_files what every output depends on besides the files that the options name: the plug-in,
     *  see findPluginFile, and the preset
     *  @throw Failure after the summary: BatchFailed if a file failed, or else InputDamaged if a part of one
     *  is lost; Failure if the batch cannot begin */
    void run(const std::vector<std::string>& key_files, const RenderChoices& choices, Console& console,
             ResultStream& result);

  private:
    void collectArguments();

    BatchSettings settings_;
    CLI::App* command_ = nullptr;
};

}  // namespace sonivex_tool
