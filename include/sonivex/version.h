/* The version of the library. */
#ifndef SONIVEX_VERSION_H
#define SONIVEX_VERSION_H

#include "sonivex/export.h"

/** The version of these headers. The build reads the project's version here. */
#define SONIVEX_VERSION_MAJOR 0
#define SONIVEX_VERSION_MINOR 1
#define SONIVEX_VERSION_PATCH 0

/** Returns the version of the library that runs, which may be newer than these headers.
 *  @return "major.minor.patch": null-terminated ASCII, valid while the library is loaded, never null.
 *  [any, concurrent] real-time safe */
SONIVEX_API const char* sonivex_version(void);

#endif /* SONIVEX_VERSION_H */
