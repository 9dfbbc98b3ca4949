// A figure of curves over one common x axis, panel under panel, as a PNG.
#pragma once

#include <string>
#include <vector>

namespace study {

struct Axis {
    std::string label;
    double low = 0;
    double high = 0;
    double step = 0;  // between ticks
    int decimals = 0;
};

struct Panel {
    Axis y;
    std::vector<std::vector<double>> curves;  // one for each name, a value for each x
};

struct Figure {
    std::string title;
    Axis x;
    std::vector<double> x_values;
    std::vector<std::string> names;  // of the curves; up to four have a colour of their own
    std::vector<Panel> panels;
};

/** @return whether the file could be written. */
bool writePng(const Figure& figure, const std::string& path);

}  // namespace study
