#pragma once

namespace fuzz {

/** Ends the program with a finding if a promise does not hold. `promise` tells what should have been true. */
void require(bool holds, const char* promise);

}  // namespace fuzz
