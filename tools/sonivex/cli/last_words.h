#pragma once

namespace sonivex_tool {

/** Prints the line for a lack of memory without using any memory. */
void printOutOfMemory();

/** From now on, memory that runs out where no exception may leave, such as inside the parser of the command
 *  line, ends the program with the line and the exit code for a lack of memory. The program still aborts for
 *  any other reason that the language gives. In both cases it does first what a second signal would do: it
 *  removes an unfinished output and gives the terminal back (`cleanUpAtOnce`). */
void explainLackOfMemoryAtTheEnd();

}  // namespace sonivex_tool
