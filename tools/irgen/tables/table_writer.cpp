#include "table_writer.h"

#include <cmath>

namespace sonivex_irgen {
namespace {

constexpr std::size_t kValuesPerLine = 16;

// A length in metres with five decimals; unlike that of a stream, the text does not depend on the locale.
std::string metres(double length_m) {
    const auto units = static_cast<unsigned long>(std::floor(length_m * 1e5 + 0.5));
    std::string decimals = std::to_string(units % 100000);
    decimals.insert(0, 5 - decimals.size(), '0');
    return std::to_string(units / 100000) + "." + decimals;
}

void appendTable(const Table& table, std::string& text) {
    text += "\nconst std::int16_t k_" + table.name + "[" + std::to_string(table.samples.size()) + "] = {";
    for (std::size_t n = 0; n < table.samples.size(); ++n) {
        text += n % kValuesPerLine == 0 ? "\n" : " ";
        text += std::to_string(table.samples[n]) + ",";
    }
    text += "\n};\n";
}

}  // namespace

std::string tableSource(const std::vector<TableSet>& sets, const TableOrigin& origin) {
    std::string text =
        "// Impulse responses. Written by sonivex-irgen; do not edit.\n"
        "//\n"
        "// Made from measured head responses. With the default file these are:\n"
        "// Bill Gardner and Keith Martin, \"HRTF Measurements of a KEMAR Dummy-Head Microphone\", MIT Media "
        "Lab\n"
        "// Perceptual Computing Technical Report 280, May 1994. Copyright 1994 MIT Media Laboratory. "
        "Provided free\n"
        "// with no restrictions on use, provided the authors are cited.\n"
        "//\n"
        "// SHA-256 of the SOFA file: " +
        origin.sofa_sha256 + "\n// Head radius: " + metres(origin.head_radius_m) +
        " m\n"
        "// clang-format off\n"
        "#include \"impulse_response_tables.h\"\n";
    for (const TableSet& set : sets) {
        for (const Table& table : set.tables) appendTable(table, text);
    }
    return text;
}

}  // namespace sonivex_irgen
