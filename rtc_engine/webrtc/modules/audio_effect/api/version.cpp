#include "sonivex/version.h"

#define SONIVEX_TEXT_OF(number) #number
#define SONIVEX_VERSION_TEXT(major, minor, patch) \
    SONIVEX_TEXT_OF(major) "." SONIVEX_TEXT_OF(minor) "." SONIVEX_TEXT_OF(patch)

const char* sonivex_version() {
    return SONIVEX_VERSION_TEXT(SONIVEX_VERSION_MAJOR, SONIVEX_VERSION_MINOR, SONIVEX_VERSION_PATCH);
}
