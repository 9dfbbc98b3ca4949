// Draws curves over a common x axis, one panel below the other, and writes them as a PNG file.
#pragma once

#include <string>
#include <vector>

#include "axis.h"

namespace study {

struct Panel {
    sonivex_plotting::Axis y;                 // its label becomes the panel's title
    std::vector<std::vector<double>> curves;  // [name][x value]
};

struct Figure {
    std::string title;
    sonivex_plotting::Axis x;
    std::vector<double> x_values;
    std::vector<std::string> names;  // of the curves; colours repeat after seven
    std::vector<Panel> panels;
};

/** Writes a figure. @return false if the file cannot be written. */
bool writePng(const Figure& figure, const std::string& path);

}  // namespace study
