// Output of the comparison: rows of figures with their bounds, as text or CSV on standard output.
#pragma once

#include <optional>
#include <string>

namespace compare {

/** Bounds of a figure. */
struct Bounds {
    enum Sense { AtLeast, AtMost } sense = AtLeast;
    std::optional<double> floor{};  // required
    std::optional<double> goal{};   // wanted
};

/** Bounds of a figure for which more is better. */
inline Bounds atLeast(std::optional<double> floor, std::optional<double> goal) {
    return {Bounds::AtLeast, floor, goal};
}
/** Bounds of a figure for which less is better. */
inline Bounds atMost(std::optional<double> floor, std::optional<double> goal) {
    return {Bounds::AtMost, floor, goal};
}

class Report {
  public:
    enum Style { Text, Csv };

    /** Prints the header line if the style is Csv. */
    explicit Report(Style style);

    /** Begins a section; the rows that follow belong to it. */
    void section(const std::string& title);
    /** Prints a figure with its bounds and a verdict: "goal", "floor", "short of the goal" or "MISSED".
     *  @param figure  the measured quantity
     *  @param subject its layout or signal */
    void row(const std::string& figure, const std::string& subject, double value, const std::string& unit,
             const Bounds& bounds = {}, const std::string& remark = {});
    /** Prints a line for the reader; in CSV it begins with #. */
    void note(const std::string& text) const;

  private:
    Style style_;
    std::string section_;
};

}  // namespace compare
