/* Log bridge: the one way by which the effects say something.
 *
 * An effect formats its own prefix and hands prefix and message to ZubrelAem_logTrace, which hands the
 * finished line to the writer. The default writer prints to standard output. */
#ifndef SONIVEX_LOG_BRIDGE_H
#define SONIVEX_LOG_BRIDGE_H

#include "sonivex/export.h"

/** Join prefix and formatted message to one line of at most 2047 bytes and hand it to `logWriterFun`.
 *  @param prefix  null-terminated, at most 2048 bytes; a longer one ends the process with a message on
 *                 standard error. From 2047 bytes on there is no room for a message. Null drops the line.
 *  @param format  printf format of the message, which carries its own newline; what does not fit is cut.
 *  With a null writer the line is dropped. Keeps no state: any thread may call it, as far as the writer
 *  allows. */
SONIVEX_API void ZubrelAem_logTrace(const char* prefix, const char* format, ...) SONIVEX_PRINTF_FORMAT(2, 3);

/** The default writer: prints `line` to standard output, adds no newline, and returns what printf returns. */
SONIVEX_API int logWrite(const char* line);

/** Receives every finished line and its length in bytes. Starts as `logWrite`; null drops every line.
 *  Set it before effects run on other threads: changing it is not synchronised. */
SONIVEX_API_VARIABLE void (*logWriterFun)(const char* line, int length);

#endif /* SONIVEX_LOG_BRIDGE_H */
