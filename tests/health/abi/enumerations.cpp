// A variable of every enumeration in the public headers, so that check-abi sees the enumerators.
#include "sonivex/sonivex.h"
#include "vorlin/log.h"

#define SHOWN __attribute__((visibility("default")))

extern "C" {
SHOWN SonivexEffectKind effect_kind;
SHOWN SonivexStatus status;
SHOWN Vorlin::LogLevel log_level;
}
