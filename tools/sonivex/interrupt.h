#pragma once

namespace sonivex_tool {

/** From now on SIGINT, SIGTERM and SIGHUP only leave a mark, so that a command can clean up behind itself; a
 * file that grows too large and a reader that goes away become errors of `write`. */
void installSignalHandlers();

/** The signal that asked the program to end, or 0. Any thread may ask. */
int pendingSignal();

/** @throw Failure with the exit code of the signal, if one is pending. */
void throwIfInterrupted();

}  // namespace sonivex_tool
