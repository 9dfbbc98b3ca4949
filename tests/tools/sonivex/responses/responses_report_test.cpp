// The three forms of the figures. JSON and CSV are read back; the table for people is compared with them.

#include "responses_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <nlohmann/json.hpp>
#include <sstream>

namespace {

using nlohmann::json;
using sonivex_tool::allResponseSets;
using sonivex_tool::findResponseSet;
using sonivex_tool::kOctaves_hz;
using sonivex_tool::MeasuredSet;
using sonivex_tool::measureSets;
using sonivex_tool::ResponseSet;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

using Fields = std::vector<std::string>;

// Reads CSV as RFC 4180 describes it.
std::vector<Fields> readCsv(const std::string& csv) {
    std::vector<Fields> lines(1, Fields(1));
    bool is_quoted = false;
    for (std::size_t i = 0; i < csv.size(); ++i) {
        std::string& field = lines.back().back();
        if (csv[i] == '"' && is_quoted && i + 1 < csv.size() && csv[i + 1] == '"') {
            field += csv[++i];
        } else if (csv[i] == '"') {
            is_quoted = !is_quoted;
        } else if (csv[i] == ',' && !is_quoted) {
            lines.back().emplace_back();
        } else if (csv.compare(i, 2, "\r\n") == 0 && !is_quoted) {
            lines.emplace_back(1);
            ++i;
        } else {
            field += csv[i];
        }
    }
    EXPECT_EQ(lines.back(), Fields(1)) << "the last line is not terminated";
    lines.pop_back();
    return lines;
}

using Row = std::map<std::string, std::string>;

std::vector<Row> rowsOf(const std::string& csv) {
    const std::vector<Fields> lines = readCsv(csv);
    std::vector<Row> rows;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i].size(), lines[0].size());
        Row& row = rows.emplace_back();
        for (std::size_t k = 0; k < lines[0].size(); ++k) row[lines[0][k]] = lines[i].at(k);
    }
    return rows;
}

// Compares a field with a number, or with null, for which it is empty.
void expectEqual(const std::string& field, const json& value) {
    if (value.is_null()) {
        EXPECT_EQ(field, "");
    } else if (value.is_string()) {
        EXPECT_EQ(field, value.get<std::string>());
    } else {
        EXPECT_EQ(std::stod(field), value.get<double>()) << field;
    }
}

std::string rounded(const json& value, int decimals) {
    if (value.is_null()) return "-";
    const double scale = std::pow(10.0, decimals);
    std::array<char, 32> text{};
    (void)std::snprintf(text.data(), text.size(), "%.*f", decimals,
                        std::round(value.get<double>() * scale) / scale + 0.0);
    return text.data();
}

std::vector<MeasuredSet> measured(const std::string& name) {
    return measureSets({{findResponseSet(name)}, std::nullopt});
}

Fields wordsOf(const std::string& line) {
    std::istringstream stream(line);
    Fields words;
    for (std::string word; stream >> word;) words.push_back(word);
    return words;
}

// Returns the eight figures at the end of a line.
Fields figuresOf(const std::string& line) {
    Fields words = wordsOf(line);
    if (words.size() < kOctaves_hz.size()) return {};
    return {words.end() - static_cast<std::ptrdiff_t>(kOctaves_hz.size()), words.end()};
}

// Returns the lines below the one that begins with `title`, `count` of them.
Fields linesBelow(const std::string& text, const std::string& title, std::size_t count) {
    std::istringstream stream(text);
    Fields lines;
    for (std::string line; std::getline(stream, line);) {
        if (lines.empty() && line.rfind("  " + title, 0) != 0) continue;
        lines.push_back(line);
        if (lines.size() > count) break;
    }
    if (!lines.empty()) lines.erase(lines.begin());
    return lines;
}

class ResponseReport : public testing::TestWithParam<const char*> {};

INSTANTIATE_TEST_SUITE_P(Sets, ResponseReport, testing::Values("cingo", "bingo-7.1", "2.0-mode1", "audio"),
                         [](const auto& parameter) {
                             std::string name = parameter.param;
                             for (char& letter : name) {
                                 if (letter == '.' || letter == '-') letter = '_';
                             }
                             return name;
                         });

TEST_P(ResponseReport, SaysTheSameAsCsvAndAsJson) {
    const auto sets = measured(GetParam());
    const json object = json::parse(responsesJson(sets));
    ASSERT_EQ(object["sets"].size(), 1U);
    const json& set = object["sets"][0];
    const std::vector<Row> rows = rowsOf(responsesCsv(sets));
    const std::size_t octaves = kOctaves_hz.size();
    ASSERT_EQ(rows.size(), octaves * (set["sources"].size() + (set["as_heard"].is_null() ? 0 : 1)));
    for (std::size_t i = 0; i < octaves * set["sources"].size(); ++i) {
        SCOPED_TRACE(i);
        Row row = rows[i];
        const json& source = set["sources"][i / octaves];
        const json& octave = source["octaves"][i % octaves];
        for (const char* member : {"set", "rate_hz"}) expectEqual(row[member], set[member]);
        for (const char* member : {"source", "loudspeaker", "interaural_delay_us"}) {
            expectEqual(row[member], source[member]);
        }
        for (const char* member : {"octave_hz", "direct_to_reverberant_db", "level_difference_direct_db",
                                   "level_difference_whole_db", "early_correlation"}) {
            expectEqual(row[member], octave[member]);
        }
        for (const char* member : {"level_difference_direct_db", "level_difference_whole_db"}) {
            expectEqual(row[std::string("all_") + member], source[member]);
        }
        for (const auto& [ear, table] :
             {std::pair{"left_", source["tables"].front()}, std::pair{"right_", source["tables"].back()}}) {
            for (const char* member : {"table", "samples", "peak", "energy_db", "arrival_samples",
                                       "arrival_ms", "reverberation_s"}) {
                expectEqual(row[std::string(ear) + member], table[member]);
            }
        }
    }
}

TEST_P(ResponseReport, SaysTheSameForPeopleRounded) {
    const auto sets = measured(GetParam());
    const json document = json::parse(responsesJson(sets));
    const json& sources = document["sets"][0]["sources"];
    const std::string text = responsesText(sets);
    struct Group {
        const char* title;
        const char* member;
        int decimals;
    };
    for (const Group& group :
         {Group{"direct-to-reverberant ratio", "direct_to_reverberant_db", 1},
          Group{"interaural level difference of the direct sound", "level_difference_direct_db", 1},
          Group{"interaural level difference of the whole response", "level_difference_whole_db", 1},
          Group{"early interaural correlation", "early_correlation", 2}}) {
        SCOPED_TRACE(group.title);
        const Fields lines = linesBelow(text, group.title, sources.size());
        if (sources[0]["octaves"][0][group.member].is_null()) {
            EXPECT_TRUE(lines.empty());  // the Audio stage, where the figure is not defined
            continue;
        }
        ASSERT_EQ(lines.size(), sources.size());
        for (std::size_t i = 0; i < sources.size(); ++i) {
            if (sources[i]["loudspeaker"].is_string()) {
                EXPECT_THAT(lines[i], HasSubstr(sources[i]["loudspeaker"].get<std::string>()));
            }
            Fields expected;
            for (const json& octave : sources[i]["octaves"]) {
                expected.push_back(rounded(octave[group.member], group.decimals));
            }
            EXPECT_EQ(figuresOf(lines[i]), expected);
        }
    }
    const Fields tables = linesBelow(text, "source ", 1);
    const json& first = sources[0]["tables"][0];
    for (const std::string& figure :
         {first["table"].get<std::string>(), rounded(first["peak"], 3),
          rounded(first["energy_db"], 1) + " dB", rounded(first["arrival_ms"], 2) + " ms",
          rounded(first["reverberation_s"], 3) + " s"}) {
        EXPECT_THAT(tables.at(0), HasSubstr(figure));
    }
}

TEST(ResponseReports, FitIntoOneHundredAndTenColumns) {
    sonivex_tool::ResponseChoice choice;
    for (const ResponseSet& set : allResponseSets()) choice.sets.push_back(&set);
    std::istringstream text(responsesText(measureSets(choice)));
    for (std::string line; std::getline(text, line);) {
        EXPECT_LE(line.size(), 110U) << line;
        EXPECT_TRUE(line.empty() || line.back() != ' ') << line;
    }
}

TEST(ResponseReports, NameTheEarThatHearsTheSoundFirst) {
    auto sets = measured("cingo");
    sets[0].sources[0].figures.delay_us = 123.4;
    sets[0].sources[1].figures.delay_us = -0.6;
    EXPECT_THAT(responsesText(sets), HasSubstr("left by 123 us"));
    EXPECT_THAT(responsesText(sets), HasSubstr("right by 1 us"));
    sets[0].sources[0].figures.delay_us = 0.4;
    sets[0].sources[1].figures.delay_us.reset();
    EXPECT_THAT(responsesText(sets), HasSubstr("   neither\n"));
    EXPECT_THAT(responsesText(sets), HasSubstr("   -\n"));
}

TEST(ResponseReports, LeaveTheComparisonsOfTheEarsOutForASharedResponse) {
    const auto sets = measured("audio");
    const json document = json::parse(responsesJson(sets));
    const json& source = document["sets"][0]["sources"][0];
    EXPECT_TRUE(source["loudspeaker"].is_null());
    EXPECT_TRUE(source["interaural_delay_us"].is_null());
    EXPECT_EQ(source["tables"].size(), 1U);
    EXPECT_EQ(source["tables"][0]["ear"], "both");
    for (const json& octave : source["octaves"]) {
        EXPECT_TRUE(octave["direct_to_reverberant_db"].is_number());
        EXPECT_TRUE(octave["level_difference_direct_db"].is_null());
        EXPECT_TRUE(octave["level_difference_whole_db"].is_null());
        EXPECT_TRUE(octave["early_correlation"].is_null());
    }
}

TEST(ResponseReports, AddTheSumThatAnEarHearsIfThereIsNoCrosstalk) {
    const auto sets = measured("2.0-mode2");
    const json document = json::parse(responsesJson(sets));
    const json& set = document["sets"][0];
    EXPECT_EQ(set["has_crosstalk"], false);
    ASSERT_EQ(set["as_heard"].size(), kOctaves_hz.size());
    const std::vector<Row> rows = rowsOf(responsesCsv(sets));
    Fields expected;
    for (std::size_t i = 0; i < kOctaves_hz.size(); ++i) {
        Row row = rows.at(2 * kOctaves_hz.size() + i);
        EXPECT_EQ(row["loudspeaker"], "both as heard");
        EXPECT_EQ(row["source"], "");
        EXPECT_EQ(row["left_table"], "");
        expectEqual(row["octave_hz"], set["as_heard"][i]["octave_hz"]);
        expectEqual(row["direct_to_reverberant_db"], set["as_heard"][i]["direct_to_reverberant_db"]);
        expected.push_back(rounded(set["as_heard"][i]["direct_to_reverberant_db"], 1));
    }
    EXPECT_EQ(figuresOf(linesBelow(responsesText(sets), "direct-to-reverberant", 3).at(2)), expected);
}

TEST(ResponseReports, AddNoSumForOneSourceOrWithCrosstalk) {
    EXPECT_FALSE(measureSets({{findResponseSet("2.0-mode2")}, 1}).at(0).as_heard);
    EXPECT_FALSE(measured("5.1-mode2").at(0).as_heard);
}

TEST(ResponseReports, SumTheTablesOfAnEarBeforeTheRatio) {
    std::array<std::vector<std::int16_t>, 4> tables;  // aL, aR, bL, bR
    for (auto& table : tables) table.resize(4000);
    ResponseSet set{.name = "made", .use = "", .format = {1000.0, 4000, 0.25, 48000}, .sources = {}};
    set.has_crosstalk = false;
    set.sources = {{"a", {"aL", tables[0]}, {"aR", tables[1]}}, {"b", {"bL", tables[2]}, {"bR", tables[3]}}};
    // Each ear has the direct sound in one table and an echo in the other. Alone, the echo would be direct.
    tables[0][50] = 1000;
    tables[2][2000] = 100;
    tables[3][50] = 1000;
    tables[1][2000] = 200;
    const auto measured_set = measureSets({{&set}, std::nullopt}).at(0);
    ASSERT_TRUE(measured_set.as_heard);
    for (const auto& octave : measured_set.as_heard->octaves) {
        EXPECT_NEAR(*octave.direct_to_reverberant_db, 10.0 * std::log10(2.0 / 0.05), 1e-6);
    }
}

TEST(ResponseReports, WriteNoNumberThatIsNotFinite) {
    auto sets = measured("cingo");
    auto& figures = sets[0].sources[0].figures;
    figures.delay_us = std::numeric_limits<double>::quiet_NaN();
    figures.octaves[0].direct_to_reverberant_db = std::numeric_limits<double>::infinity();
    sets[0].sources[0].tables[0].figures.energy_db = -std::numeric_limits<double>::infinity();
    const json document = json::parse(responsesJson(sets));
    const json& source = document["sets"][0]["sources"][0];
    EXPECT_TRUE(source["interaural_delay_us"].is_null());
    EXPECT_TRUE(source["octaves"][0]["direct_to_reverberant_db"].is_null());
    EXPECT_TRUE(source["tables"][0]["energy_db"].is_null());
    Row row = rowsOf(responsesCsv(sets)).at(0);
    EXPECT_EQ(row["interaural_delay_us"], "");
    EXPECT_EQ(row["direct_to_reverberant_db"], "");
    EXPECT_EQ(row["left_energy_db"], "");
    for (const std::string& text : {responsesText(sets), responsesCsv(sets), responsesJson(sets)}) {
        EXPECT_THAT(text, Not(testing::ContainsRegex("[^a-z](nan|inf)")));
    }
}

TEST(ResponseReports, QuoteTheFieldsOfCsvThatNeedIt) {
    auto sets = measured("cingo");
    sets[0].sources[0].loudspeaker = "left, \"near\"";
    sets[0].sources[0].tables[0].name = "two\r\nlines";
    const std::string csv = responsesCsv(sets);
    EXPECT_THAT(csv, HasSubstr(R"("left, ""near""")"));
    Row row = rowsOf(csv).at(0);
    EXPECT_EQ(row["loudspeaker"], "left, \"near\"");
    EXPECT_EQ(row["left_table"], "two\r\nlines");
}

TEST(ResponseReports, EndEveryLineOfCsvAsTheStandardSays) {
    const std::string csv = responsesCsv(measured("cingo"));
    std::size_t lines = 0;
    for (std::size_t i = csv.find('\n'); i != std::string::npos; i = csv.find('\n', i + 1), ++lines) {
        EXPECT_EQ(csv.at(i - 1), '\r');
    }
    EXPECT_EQ(lines, 1 + 2 * kOctaves_hz.size());
    EXPECT_EQ(csv.find("set,source,loudspeaker,"), 0U);
}

}  // namespace
