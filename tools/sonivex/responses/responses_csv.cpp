#include <array>
#include <charconv>
#include <cmath>

#include "responses_report.h"

namespace sonivex_tool {
namespace {

constexpr char kEndOfLine[] = "\r\n";  // as RFC 4180 has it
constexpr std::size_t kTableFields = 7;
constexpr char kHeader[] =
    "set,source,loudspeaker,rate_hz,octave_hz,"
    "direct_to_reverberant_db,level_difference_direct_db,level_difference_whole_db,early_correlation,"
    "interaural_delay_us,all_level_difference_direct_db,all_level_difference_whole_db,"
    "left_table,left_samples,left_peak,left_energy_db,left_arrival_samples,left_arrival_ms,"
    "left_reverberation_s,"
    "right_table,right_samples,right_peak,right_energy_db,right_arrival_samples,right_arrival_ms,"
    "right_reverberation_s";

// A line whose fields are separated by commas.
class Line {
  public:
    void add(const std::string& field) {
        if (!text_.empty()) text_ += ',';
        const bool needs_quotes = field.find_first_of(",\"\r\n") != std::string::npos;
        if (!needs_quotes) {
            text_ += field;
            return;
        }
        text_ += '"';
        for (const char letter : field) text_ += letter == '"' ? std::string("\"\"") : std::string(1, letter);
        text_ += '"';
    }

    // Writes the shortest number that reads back as the same value; nothing for a missing one.
    void add(const std::optional<double>& value) {
        std::array<char, 32> digits{};
        char* end = digits.data();
        if (value && std::isfinite(*value)) {
            end = std::to_chars(digits.data(), digits.data() + digits.size(), *value).ptr;
        }
        add(std::string(digits.data(), end));
    }

    void add(const MeasuredTable& table) {
        add(table.name);
        add(std::to_string(table.samples));
        add(table.figures.peak);
        add(table.figures.energy_db);
        add(std::to_string(table.figures.arrival_samples));
        add(table.figures.arrival_ms);
        add(table.figures.reverberation_s);
    }

    void addEmpty(std::size_t fields) { text_ += std::string(fields, ','); }

    const std::string& text() const { return text_; }

  private:
    std::string text_;
};

// Returns the fields that precede those of the tables.
Line beginningOf(const ResponseSet& set, const std::string& source, const std::string& loudspeaker,
                 const SourceMeasures& figures, std::size_t octave) {
    const OctaveMeasures& in_octave = figures.octaves.at(octave);
    Line line;
    line.add(set.name);
    line.add(source);
    line.add(loudspeaker);
    line.add(std::to_string(set.format.rate_hz));
    line.add(std::to_string(kOctaves_hz.at(octave)));
    line.add(in_octave.direct_to_reverberant_db);
    line.add(in_octave.level_difference.direct_db);
    line.add(in_octave.level_difference.whole_db);
    line.add(in_octave.early_correlation);
    line.add(figures.delay_us);
    line.add(figures.level_difference.direct_db);
    line.add(figures.level_difference.whole_db);
    return line;
}

std::string linesOf(const ResponseSet& set, const MeasuredSource& source) {
    std::string lines;
    for (std::size_t octave = 0; octave < kOctaves_hz.size(); ++octave) {
        Line line =
            beginningOf(set, std::to_string(source.number), source.loudspeaker, source.figures, octave);
        line.add(source.tables.front());
        line.add(source.tables.back());
        lines += line.text() + kEndOfLine;
    }
    return lines;
}

std::string linesAsHeard(const ResponseSet& set, const SourceMeasures& figures) {
    std::string lines;
    for (std::size_t octave = 0; octave < kOctaves_hz.size(); ++octave) {
        Line line = beginningOf(set, "", "both as heard", figures, octave);
        line.addEmpty(2 * kTableFields);
        lines += line.text() + kEndOfLine;
    }
    return lines;
}

}  // namespace

std::string responsesCsv(const std::vector<MeasuredSet>& sets) {
    std::string csv = std::string(kHeader) + kEndOfLine;
    for (const MeasuredSet& measured : sets) {
        for (const MeasuredSource& source : measured.sources) csv += linesOf(*measured.set, source);
        if (measured.as_heard) csv += linesAsHeard(*measured.set, *measured.as_heard);
    }
    return csv;
}

}  // namespace sonivex_tool
