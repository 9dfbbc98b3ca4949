/* The results of the functions in effect.h, and their texts. */
#ifndef SONIVEX_STATUS_H
#define SONIVEX_STATUS_H

#include "sonivex/export.h"

/** Tells what became of a call. Functions that return a count return it in place of SONIVEX_OK. */
enum SonivexStatus {
    SONIVEX_OK = 0,
    SONIVEX_ERROR_ARGUMENT = -1,    /* a null pointer, or a number outside its range */
    SONIVEX_ERROR_UNSUPPORTED = -2, /* the effect does not process this channel count, rate or type */
    SONIVEX_ERROR_MEMORY = -3,      /* memory ran out */
    SONIVEX_ERROR_NOT_BUILT = -4,   /* this build of the library lacks the effect */
    SONIVEX_ERROR_GAPS = -5         /* calls of this length leave silent gaps in mid-stream */
};

/** Describes a status in a few words, as "memory ran out".
 *  @param status a SonivexStatus; every number above 0 reads as SONIVEX_OK.
 *  @return null-terminated ASCII without a full stop, valid while the library is loaded, never null; "unknown
 *          status" for other numbers.
 *  [any, concurrent] real-time safe */
SONIVEX_API const char* sonivex_status_text(int status);

#endif /* SONIVEX_STATUS_H */
