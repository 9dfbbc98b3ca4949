#pragma once

#include <thread>

namespace sonivex_tool {

/** Makes SIGINT, SIGTERM and SIGHUP set a flag (`pendingSignal`) instead of ending the program, so that a
 * command can clean up. The second such signal ends the program at once.
 *
 * SIGXFSZ and SIGPIPE are ignored from then on: a file over the size limit and a closed pipe become errors of
 * `write`. */
void installSignalHandlers();

/** Sets the file that the second signal removes before it ends the program. The second signal is the user's
 * way out when the running code never checks the flag.
 *
 * @param path copied; null for no file. A path of PATH_MAX bytes or more is ignored, since the system would
 * not open it either.
 *
 * Only one thread may call this. */
void removeOnSecondSignal(const char* path);

/** Sets what the second signal calls before it ends the program, such as a function that gives the terminal
 *  back.
 *
 * @param function calls only async-signal-safe functions; null for none
 *
 * Only one thread may call this. */
void onSecondSignal(void (*function)());

/** Does what the second signal does before it ends the program: removes the file (`removeOnSecondSignal`) and
 *  calls the function (`onSecondSignal`). For a caller that then ends the program at once, without its
 *  destructors. Async-signal-safe; any thread may call this. */
void cleanUpAtOnce();

/** The signal that asked the program to end, or 0. Any thread may call this. */
int pendingSignal();

/** Makes a system call return in which `thread` may be waiting, so that it sees a pending signal. Needs
 * installSignalHandlers. */
void nudge(std::thread& thread);

/** Throws if a signal is pending. @throw Failure with the exit code of that signal */
void throwIfInterrupted();

}  // namespace sonivex_tool
