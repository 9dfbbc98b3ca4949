#include "sonivex/status.h"

const char* sonivex_status_text(int status) {
    if (status >= SONIVEX_OK) return "no error";
    switch (status) {
        case SONIVEX_ERROR_ARGUMENT:
            return "an argument is null or out of range";
        case SONIVEX_ERROR_UNSUPPORTED:
            return "the effect does not support this channel count, rate or type";
        case SONIVEX_ERROR_MEMORY:
            return "memory ran out";
        case SONIVEX_ERROR_NOT_BUILT:
            return "this build of the library lacks the effect";
        case SONIVEX_ERROR_GAPS:
            return "calls of this length leave silent gaps";
        default:
            return "unknown status";
    }
}
