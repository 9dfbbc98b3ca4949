#pragma once

namespace sonivex_tool {

/** Exit codes of the program. The numbers are part of its interface; docs/command-line.md lists them. */
enum class ExitCode : int {
    Success = 0,
    Internal = 1,           // out of memory, a bug, or a result that cannot be written
    Usage = 2,              // invalid command line
    InputNotReadable = 3,   // no such file, no permission, or a format unknown to libavformat
    NoAudio = 4,            // no audio stream, no such stream, or nothing in it decodes
    UnsupportedAudio = 5,   // the command or its effect does not process this channel count or sample rate
    OutputExists = 6,       // OUT exists without --force, or is not a regular file
    OutputNotWritable = 7,  // no such folder, no permission, or a failed write
    NoSpace = 8,            // the disk, the quota or the file size limit is exhausted
    OutputFormat = 9,       // no format or encoder for OUT, or one that does not support this audio
    PluginNotFound = 10,    // the plug-in cannot be loaded, or does not contain the filter
    EffectMissing = 11,     // the plug-in was built without the effect
    FilterFailed = 12,      // the filter stalled, or rejected its options or every frame
    InputDamaged = 13,      // OUT is complete, but a part of IN was lost
    BatchFailed = 14,       // some files of a batch failed
    NoSoundCard = 15,       // no sound card opens, or it stopped playing
    Interrupted = 130,      // SIGINT
    Terminated = 143,       // SIGTERM or SIGHUP
};

}  // namespace sonivex_tool
