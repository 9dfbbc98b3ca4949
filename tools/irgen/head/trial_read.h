// A trial of libmysofa on a file that may be damaged, in a process of its own.
#pragma once

#include <string>

namespace sonivex_irgen {

/** Seconds of a processor's time in which any file of a head can be read. */
inline constexpr int kLongestRead_s = 20;

/** Lets libmysofa read a file in another process, because some damaged files send it round an endless loop.
 *  The trial does not judge the file. A system that gives no process is no reason to refuse the file.
 *  @param longest_s of a processor's time
 *  Throws UnusableHead if it takes longer or crashes. */
void tryReading(const std::string& path, int longest_s = kLongestRead_s);

}  // namespace sonivex_irgen
