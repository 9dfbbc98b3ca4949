// Writes log lines of an effect.
//
//   line = "[ZubrelAem]: (<source>: <line>) " + message
//
// Use: sonivex::logEffectMessage("normalizer", kLineNullHandle, "...\n"). Users and their log filters see the
// line numbers, so these are literal constants and stay the same when code moves.
#pragma once

namespace sonivex {

/** Passes a message with an effect's prefix to ZubrelAem_logTrace.
 *  @param source  base name of the effect's source file. The prefix is cut off after 255 bytes.
 *  @param line    line number to show.
 *  @param message literal text, not a format; includes its own newline.
 *  [any, concurrent] if the log writer allows it; not real-time safe (the writer may block) */
void logEffectMessage(const char* source, int line, const char* message);

}  // namespace sonivex
