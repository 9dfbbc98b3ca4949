#pragma once

#include <string>

#include "filter/faults/filter_under_test.h"

namespace test {

/** Sets `options`, a list of JSON members, switches the dump on and makes the filter valid. */
inline void startDumping(FilterUnderTest& filter, const std::string& options) {
    filter.options("{" + options + R"(, "enable_dump": true})");
    filter->setInvalid(false);
}

/** Returns the id of the current dump session; empty before the first dumped block. */
inline std::string sessionOf(FilterUnderTest& filter) {
    return filter.field(Peer::kSessionId);
}

}  // namespace test
