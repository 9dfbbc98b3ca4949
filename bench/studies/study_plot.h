// Draws curves over a common x axis, one panel below the other, and writes them as a PNG file.
#pragma once

#include <string>
#include <vector>

namespace study {

struct Axis {
    std::string label;
    double low = 0;
    double high = 0;
    double step = 0;   // distance of ticks
    int decimals = 0;  // of the tick labels
};

struct Panel {
    Axis y;
    std::vector<std::vector<double>> curves;  // [name][x value]
};

struct Figure {
    std::string title;
    Axis x;
    std::vector<double> x_values;
    std::vector<std::string> names;  // of the curves; colours repeat after four
    std::vector<Panel> panels;
};

/** Writes a figure. @return false if the file cannot be written. */
bool writePng(const Figure& figure, const std::string& path);

}  // namespace study
