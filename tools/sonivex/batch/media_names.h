#pragma once

#include <string>

namespace sonivex_tool {

/** Returns true if the extension of `path` is one that audio files and films usually have. */
bool looksLikeMedia(const std::string& path);

/** Returns true if `render` can write a file with this extension: libavformat has a format for it that stores
 *  the sample rate and the channels, and libavcodec an encoder.
 *  @param extension without the dot */
bool isWritableExtension(const std::string& extension);

/** Returns the usual extension of a format, without the dot, or nothing if it has none or is unknown.
 *  @param format libavformat's name, such as matroska */
std::string extensionOfFormat(const std::string& format);

}  // namespace sonivex_tool
