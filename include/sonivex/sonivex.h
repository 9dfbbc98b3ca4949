/* The public C interface of Sonivex: the effects and their log bridge. */
#ifndef SONIVEX_SONIVEX_H
#define SONIVEX_SONIVEX_H

#include "sonivex/dialoguenhance.h"
#include "sonivex/effect.h"
#include "sonivex/log_bridge.h"
#include "sonivex/normalizer.h"
#include "sonivex/status.h"
#include "sonivex/surround.h"
#include "sonivex/vectors.h"
#include "sonivex/version.h"

#endif /* SONIVEX_SONIVEX_H */
