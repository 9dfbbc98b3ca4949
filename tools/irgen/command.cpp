#include "command.h"

#include <fstream>
#include <iomanip>
#include <iterator>
#include <new>
#include <optional>
#include <ostream>

#include "directional_transfer.h"
#include "finish.h"
#include "interaural_delay.h"
#include "replacement_file.h"
#include "sha256.h"
#include "sofa_file.h"
#include "table_facts.h"
#include "table_writer.h"
#include "trial_read.h"

namespace sonivex_irgen {
namespace {

constexpr const char* kUsageText = "usage: sonivex-irgen [--sofa FILE] --out FILE [--report]\n";

struct Options {
    std::string sofa;
    std::string out;
    bool is_report_wanted = false;
};

std::optional<Options> parse(const std::vector<std::string>& arguments, const std::string& default_sofa) {
    Options options{.sofa = default_sofa, .out = {}, .is_report_wanted = false};
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        if (arguments[i] == "--report") {
            options.is_report_wanted = true;
        } else if ((arguments[i] == "--sofa" || arguments[i] == "--out") && i + 1 < arguments.size()) {
            std::string& file = arguments[i] == "--sofa" ? options.sofa : options.out;
            file = arguments[++i];
        } else {
            return std::nullopt;
        }
    }
    if (options.sofa.empty() || options.out.empty()) return std::nullopt;
    return options;
}

std::string fileBytes(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void printReport(const std::vector<TableSet>& sets, double head_radius_m, std::ostream& out) {
    out << std::fixed << "head radius " << std::setprecision(5) << head_radius_m << " m\n"
        << "set              scale    peak  loudness change dB  largest equaliser gain dB\n";
    for (const TableSet& set : sets) {
        out << std::left << std::setw(12) << set.name << std::right << std::setprecision(1) << std::setw(10)
            << set.scale << std::setprecision(0) << std::setw(8) << set.peak << std::setprecision(2)
            << std::setw(20) << set.loudness_change_db << std::setw(27) << set.largest_gain_db << "\n";
    }
}

void makeTables(const Options& options, std::ostream& out) {
    tryReading(options.sofa);
    const HeadMeasurements measurements = readSofaFile(options.sofa);
    ReplacementFile file(options.out);
    const double radius_m = fitHeadRadius_m(measurements);
    const HeadModel head(directionalTransfers(measurements), radius_m);
    const std::vector<TableSet> sets = makeTableSets(head);
    checkTableFacts(sets);
    file.commit(tableSource(sets, {sha256(fileBytes(options.sofa)), radius_m}));
    if (options.is_report_wanted) printReport(sets, radius_m, out);
}

}  // namespace

int runCommand(const std::vector<std::string>& arguments, const std::string& default_sofa, std::ostream& out,
               std::ostream& err) {
    const std::optional<Options> options = parse(arguments, default_sofa);
    if (!options) {
        err << kUsageText;
        return kUsage;
    }
    try {
        makeTables(*options, out);
        return kDone;
    } catch (const UnusableHead& reason) {
        err << options->sofa << ": " << reason.what() << "\n";
        return kUnusableSofa;
    } catch (const UnwritableOutput& reason) {
        err << reason.what() << "\n";
        return kUnwritableOutput;
    } catch (const UnmetTableFact& reason) {
        err << options->sofa << ": " << reason.what() << "\n";
        return kUnmetFact;
    } catch (const std::bad_alloc&) {
        err << options->sofa << ": out of memory\n";
        return kUnusableSofa;
    }
}

}  // namespace sonivex_irgen
