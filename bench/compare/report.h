// What the comparison prints: rows of figures, with what is asked of them beside, as text or as CSV.
#pragma once

#include <optional>
#include <string>

namespace compare {

/** What is asked of a figure. */
struct Bounds {
    enum Sense { AtLeast, AtMost } sense = AtLeast;
    std::optional<double> floor{};  // what must be reached
    std::optional<double> goal{};   // what is wanted
};

inline Bounds atLeast(std::optional<double> floor, std::optional<double> goal) {
    return {Bounds::AtLeast, floor, goal};
}
inline Bounds atMost(std::optional<double> floor, std::optional<double> goal) {
    return {Bounds::AtMost, floor, goal};
}

class Report {
  public:
    enum Style { Text, Csv };

    explicit Report(Style style);

    void section(const std::string& title);
    /** @param figure what was measured.  @param subject of which layout or signal. */
    void row(const std::string& figure, const std::string& subject, double value, const std::string& unit,
             const Bounds& bounds = {}, const std::string& remark = {});
    /** A line for the reader. */
    void note(const std::string& text) const;

  private:
    Style style_;
    std::string section_;
};

}  // namespace compare
