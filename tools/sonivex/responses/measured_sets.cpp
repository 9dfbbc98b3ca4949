#include "measured_sets.h"

#include "interrupt.h"

namespace sonivex_tool {
namespace {

std::vector<double> sumOverSources(const ResponseSet& set, ResponseTable ResponseSource::*ear) {
    std::vector<double> sum(set.format.samples, 0.0);
    for (const ResponseSource& source : set.sources) {
        const std::vector<double> gains = gainsOf(source.*ear, set);
        for (std::size_t n = 0; n < sum.size(); ++n) sum[n] += gains[n];
    }
    return sum;
}

}  // namespace

MeasuredSource measureSourceOf(const ResponseSet& set, int number) {
    const ResponseSource& source = set.sources.at(static_cast<std::size_t>(number) - 1);
    const int rate_hz = set.format.rate_hz;
    const std::vector<double> left = gainsOf(source.left, set);
    const std::vector<double> right = gainsOf(source.right, set);
    const auto measured = [&](const char* ear, const ResponseTable& table, const std::vector<double>& gains) {
        return MeasuredTable{ear, table.name, gains.size(),
                             measureResponse(gains, rate_hz, set.format.faded_part)};
    };
    MeasuredSource result{.number = number, .loudspeaker = source.loudspeaker, .tables = {}, .figures = {}};
    if (isSharedByBothEars(source)) {
        result.tables = {measured("both", source.left, left)};
        result.figures = measureRatios(left, left, rate_hz);
    } else {
        result.tables = {measured("left", source.left, left), measured("right", source.right, right)};
        result.figures = measureSource(left, right, rate_hz);
    }
    return result;
}

std::vector<MeasuredSet> measureSets(const ResponseChoice& choice) {
    std::vector<MeasuredSet> sets;
    for (const ResponseSet* set : choice.sets) {
        MeasuredSet& measured = sets.emplace_back();
        measured.set = set;
        for (int number = 1; number <= static_cast<int>(set->sources.size()); ++number) {
            if (choice.source && *choice.source != number) continue;
            throwIfInterrupted();
            measured.sources.push_back(measureSourceOf(*set, number));
        }
        if (set->has_crosstalk || choice.source) continue;
        measured.as_heard = measureRatios(sumOverSources(*set, &ResponseSource::left),
                                          sumOverSources(*set, &ResponseSource::right), set->format.rate_hz);
    }
    return sets;
}

}  // namespace sonivex_tool
