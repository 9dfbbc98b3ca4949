// How an effect says something.
//
//   line = "[ZubrelAem]: (<source>: <line>) " + message
//
// Use: sonivex::logEffectMessage("normalizer", kLineNullHandle, "...\n"). The line numbers are part of what
// users and their log filters see, so they are literal constants and stay when code moves.
#pragma once

namespace sonivex {

/** Hand a message with an effect's prefix to ZubrelAem_logTrace.
 *  @param source  base name of the effect's source file; what passes 255 bytes of prefix is cut.
 *  @param line    line number to show.
 *  @param message taken as it is (no format), with its own newline. */
void logEffectMessage(const char* source, int line, const char* message);

}  // namespace sonivex
