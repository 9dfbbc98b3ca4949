#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace sonivex_plotting {

/** An image of one brightness per pixel. */
struct GreyImage {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> values;  // [height][width], the top row first
};

/** Returns the image as a PNG file of 8 bits per pixel. An image without pixels gives an empty string.
 *  @throw std::bad_alloc; std::runtime_error if the drawing library fails */
std::string greyPng(const GreyImage& image);

}  // namespace sonivex_plotting
