#pragma once

#include <string>

namespace test {

/** Writes three 16-bit stereo files at 48 kHz: recorded speech in the centre, independent noise on each side,
 *  and their sum.
 *  @param seconds Duration of each file. */
void makeDialogueMix(const std::string& speech, const std::string& background, const std::string& mix,
                     int seconds);

}  // namespace test
