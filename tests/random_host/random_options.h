#pragma once

#include <string>

#include "random_host/byte_source.h"

namespace test {

/** Returns a JSON object that selects an effect, or none. */
std::string effectOption(ByteSource& bytes);

/** Returns a JSON object of known members with values of the right and of the wrong kind.
 *  @param may_dump whether a member may switch the dump on. */
std::string objectOption(ByteSource& bytes, bool may_dump);

/** Returns a text for an option that is a number: a number, an extreme one, or no number. */
std::string numberOption(ByteSource& bytes);

}  // namespace test
