/* Log bridge: carries the effects' log lines to a writer that the embedding program can replace.
 *
 * An effect formats its own prefix and passes prefix and message to ZubrelAem_logTrace, which passes the
 * finished line to the writer. The default writer prints to standard output. */
#ifndef SONIVEX_LOG_BRIDGE_H
#define SONIVEX_LOG_BRIDGE_H

#include "sonivex/export.h"

/** Joins the prefix and the formatted message into one line of at most 2047 bytes and passes it to
 *  `logWriterFun`.
 *  @param prefix  null-terminated, at most 2048 bytes. A longer prefix aborts the process with a message on
 *                 standard error. A prefix of 2047 bytes or more leaves no room for a message. Null drops the
 *                 line.
 *  @param format  printf format of the message, which includes its own newline. Bytes that do not fit are cut
 *                 off. Null drops the line.
 *  A null writer drops the line. The function keeps no state, so it is as thread-safe as the writer.
 *  [any, concurrent] if the writer allows it; not real-time safe (the writer may block) */
SONIVEX_API void ZubrelAem_logTrace(const char* prefix, const char* format, ...) SONIVEX_PRINTF_FORMAT(2, 3);

/** Default writer. Prints `line` to standard output, without adding a newline.
 *  @return the result of printf.
 *  [any, concurrent] not real-time safe (writes to standard output) */
SONIVEX_API int logWrite(const char* line);

/** The writer, which receives every finished line and its length in bytes. Initially `logWrite`; null drops
 *  every line. Access is not synchronised: set it before effects run on other threads. */
SONIVEX_API_VARIABLE void (*logWriterFun)(const char* line, int length);

#endif /* SONIVEX_LOG_BRIDGE_H */
