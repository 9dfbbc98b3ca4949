#include "effect_log.h"

#include <cstdio>

#include "sonivex/log_bridge.h"

namespace sonivex {

void logEffectMessage(const char* source, int line, const char* message) {
    constexpr std::size_t kPrefixBytes = 256;
    char prefix[kPrefixBytes] = {};
    std::snprintf(prefix, kPrefixBytes, "[ZubrelAem]: (%s: %d) ", source, line);
    ZubrelAem_logTrace(prefix, "%s", message);
}

}  // namespace sonivex
