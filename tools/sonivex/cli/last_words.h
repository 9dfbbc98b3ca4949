#pragma once

namespace sonivex_tool {

/** Prints the line for a lack of memory without using any memory. */
void printOutOfMemory();

/** From now on, memory that runs out where no exception may leave, such as inside the parser of the command
 *  line, ends the program with the line and the exit code for a lack of memory. It removes an unfinished
 *  output first. The program still aborts for any other reason that the language gives. */
void explainLackOfMemoryAtTheEnd();

}  // namespace sonivex_tool
