#pragma once

namespace sonivex_tool {

/** Makes the program end without the clean-up of the C library, which would wait for ever for a lock that a
 * stuck thread holds. Any thread may call this. */
void skipCleanUpAtEnd();

/** Returns from main() with an exit code, or ends the program at once if skipCleanUpAtEnd() was called.
 * @return `exit_code` */
int endProgram(int exit_code);

}  // namespace sonivex_tool
