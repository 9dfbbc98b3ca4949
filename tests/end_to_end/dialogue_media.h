#pragma once

#include <string>

namespace test {

/** Recorded speech in the centre and, round it, independent noise on either side, as 16-bit stereo files of
 * 48 kHz: the two alone and their sum. @param seconds of all three */
void makeDialogueMix(const std::string& speech, const std::string& background, const std::string& mix,
                     int seconds);

}  // namespace test
