#include "report.h"

#include <cmath>
#include <cstdio>

namespace compare {
namespace {

std::string number(std::optional<double> value) {
    if (!value) return "";
    char text[32];
    const int decimals = std::abs(*value) < 0.1 ? 4 : std::abs(*value) < 100 ? 2 : 0;
    std::snprintf(text, sizeof(text), "%.*f", decimals, *value);
    return text;
}

bool meets(double value, double bound, Bounds::Sense sense) {
    return sense == Bounds::AtLeast ? value >= bound : value <= bound;
}

const char* verdict(double value, const Bounds& bounds) {
    if (!bounds.floor && !bounds.goal) return "";
    if (bounds.goal && meets(value, *bounds.goal, bounds.sense)) return "goal";
    if (!bounds.floor) return "short of the goal";
    return meets(value, *bounds.floor, bounds.sense) ? "floor" : "MISSED";
}

}  // namespace

Report::Report(Style style) : style_(style) {
    if (style_ == Csv) std::puts("section,figure,subject,value,unit,floor,goal,verdict,remark");
}

void Report::section(const std::string& title) {
    section_ = title;
    if (style_ == Csv) return;
    std::printf("\n%s\n  %-52s %-14s %10s %-9s %9s %9s\n", title.c_str(), "", "", "measured", "", "floor",
                "goal");
}

void Report::row(const std::string& figure, const std::string& subject, double value, const std::string& unit,
                 const Bounds& bounds, const std::string& remark) {
    const std::string floor = number(bounds.floor);
    const std::string goal = number(bounds.goal);
    if (style_ == Csv) {
        std::printf("\"%s\",\"%s\",\"%s\",%.6g,%s,%s,%s,%s,\"%s\"\n", section_.c_str(), figure.c_str(),
                    subject.c_str(), value, unit.c_str(), floor.c_str(), goal.c_str(), verdict(value, bounds),
                    remark.c_str());
    } else {
        std::printf("  %-52s %-14s %10s %-9s %9s %9s  %s%s\n", figure.c_str(), subject.c_str(),
                    number(value).c_str(), unit.c_str(), floor.c_str(), goal.c_str(), verdict(value, bounds),
                    remark.c_str());
    }
    std::fflush(stdout);
}

void Report::note(const std::string& text) const {
    std::printf("%s%s\n", style_ == Csv ? "# " : "  ", text.c_str());
    std::fflush(stdout);
}

}  // namespace compare
