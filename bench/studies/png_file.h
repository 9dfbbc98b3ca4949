// Writes a drawing as a PNG file.
#pragma once

#include <fstream>
#include <functional>
#include <string>

#include "picture.h"

namespace study {

/** Writes a picture. @return false if the file cannot be written. */
inline bool writePng(int width, int height, const std::string& title, const std::string& path,
                     const std::function<void(sonivex_plotting::Canvas&)>& draw) {
    std::ofstream file(path, std::ios::binary);
    file << sonivex_plotting::pictureFile(sonivex_plotting::PictureFormat::Png, width, height, title, draw);
    file.close();
    return file.good();
}

}  // namespace study
