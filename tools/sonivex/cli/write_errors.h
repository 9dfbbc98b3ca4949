#pragma once

#include <cerrno>

#include "exit_codes.h"

namespace sonivex_tool {

/** Returns the exit code for an output that cannot be made or written.
 *  @param error_number an errno
 *  @return NoSpace if the disk, the quota or the file size limit is exhausted, otherwise OutputNotWritable */
inline ExitCode exitCodeOfWriteError(int error_number) {
    const bool is_full = error_number == ENOSPC || error_number == EDQUOT || error_number == EFBIG;
    return is_full ? ExitCode::NoSpace : ExitCode::OutputNotWritable;
}

}  // namespace sonivex_tool
