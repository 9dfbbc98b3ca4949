#pragma once

namespace sonivex_tool {

/** From now on SIGINT, SIGTERM and SIGHUP only leave a mark, so that a command can clean up behind itself; a
 * file that grows too large and a reader that goes away become errors of `write`. */
void installSignalHandlers();

/** The file that the second such signal removes, which ends the program at once: the way out when whatever
 * runs never gets to see the mark. Null: none. A copy is kept; a path that the system would not open anyway
 * is ignored. One thread may call this. */
void removeOnSecondSignal(const char* path);

/** The signal that asked the program to end, or 0. Any thread may ask. */
int pendingSignal();

/** @throw Failure with the exit code of the signal, if one is pending. */
void throwIfInterrupted();

}  // namespace sonivex_tool
