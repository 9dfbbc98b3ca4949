#pragma once

#include <functional>
#include <optional>
#include <string>

#include "canvas.h"

namespace sonivex_plotting {

/** The kinds of picture files. */
enum class PictureFormat { Png, Svg, Pdf };

/** Returns the format that a path's extension names, in capitals or not: .png, .svg or .pdf. */
std::optional<PictureFormat> pictureFormatOf(const std::string& path);

/** Draws a picture on white and returns the bytes of its file.
 *  @param width, height in pixels; an SVG file has the same size, a PDF page 3/4 point for each pixel
 *  @param title stored in the file, for programs that show or index it
 *  @throw std::bad_alloc; std::runtime_error if the drawing library fails */
std::string pictureFile(PictureFormat format, int width, int height, const std::string& title,
                        const std::function<void(Canvas&)>& draw);

/** Draws a picture as an element of a page, an `svg` that is as wide as its place allows, without a
 *  background. ElementCanvas tells which colours it takes from the page.
 *  @param description read aloud in place of the picture
 *  @throw std::bad_alloc; std::runtime_error if the drawing library fails */
std::string pictureElement(int width, int height, const std::string& description,
                           const std::function<void(Canvas&)>& draw);

}  // namespace sonivex_plotting
