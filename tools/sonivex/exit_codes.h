#pragma once

namespace sonivex_tool {

/** What the program ends with. The numbers are part of its interface: docs/command-line.md lists them. */
enum class ExitCode : int {
    Success = 0,
    Internal = 1,           // out of memory, a bug
    Usage = 2,              // the command line makes no sense
    InputNotReadable = 3,   // no such file, no permission, no format that libavformat knows
    NoAudio = 4,            // no audio stream, no such stream, or nothing in it that decodes
    UnsupportedAudio = 5,   // the effect passes this channel count or sample rate on untouched
    OutputExists = 6,       // OUT is there and --force is not, or OUT is no regular file
    OutputNotWritable = 7,  // no such folder, no permission, a write that failed
    NoSpace = 8,            // the disk, the quota or the file size limit is used up
    OutputFormat = 9,       // no format or encoder for OUT, or one that cannot hold this audio
    PluginNotFound = 10,    // the plug-in cannot be loaded or holds no filter of that name
    EffectMissing = 11,     // the plug-in was built without the effect
    FilterFailed = 12,      // the filter stalled, or refused the options or every frame
    Interrupted = 130,      // SIGINT
    Terminated = 143,       // SIGTERM
};

}  // namespace sonivex_tool
