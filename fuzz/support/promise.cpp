#include "support/promise.h"

#include <cstdio>
#include <cstdlib>

namespace fuzz {

void require(bool holds, const char* promise) {
    if (holds) return;
    std::fprintf(stderr, "broken promise: %s\n", promise);
    std::abort();
}

}  // namespace fuzz
