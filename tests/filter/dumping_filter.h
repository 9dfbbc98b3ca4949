#pragma once

#include <string>

#include "filter_under_test.h"

namespace test {

/** Valid, dumping, with more options as JSON members. */
inline void startDumping(FilterUnderTest& filter, const std::string& options) {
    filter.options("{" + options + R"(, "enable_dump": true})");
    filter->setInvalid(false);
}

inline std::string sessionOf(FilterUnderTest& filter) {
    return filter.field(Peer::kSessionId);
}

}  // namespace test
