#include "commands.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "failure.h"
#include "interrupt.h"
#include "option_checks.h"
#include "output_file.h"
#include "responses_plot.h"
#include "responses_report.h"
#include "result_stream.h"

namespace sonivex_tool {
namespace {

using sonivex_plotting::pictureFormatOf;

struct ResponsesChoices {
    std::string set;
    std::optional<int> source;
    std::string plot;
    bool json = false;
    bool csv = false;
};

std::vector<std::string> setNames() {
    std::vector<std::string> names;
    for (const ResponseSet& set : allResponseSets()) names.push_back(set.name);
    return names;
}

ResponseChoice chosenBy(const ResponsesChoices& choices) {
    ResponseChoice choice;
    choice.source = choices.source;
    for (const ResponseSet& set : allResponseSets()) {
        if (choices.set.empty() || set.name == choices.set) choice.sets.push_back(&set);
    }
    if (choices.source && choices.set.empty()) throw Failure(ExitCode::Usage, "--source needs --set");
    const auto sources = static_cast<int>(choice.sets.front()->sources.size());
    if (choices.source && *choices.source > sources) {
        throw Failure(ExitCode::Usage, "--source " + std::to_string(*choices.source) + ": " + choices.set +
                                           " has sources 1 to " + std::to_string(sources));
    }
    return choice;
}

void writePlot(const ResponseSet& set, int source, const std::string& path) {
    OutputFile file(path, true);
    const std::string picture = plotResponses(set, source, pictureFormatOf(path).value());
    avio_write(file.io(), reinterpret_cast<const unsigned char*>(picture.data()),
               static_cast<int>(picture.size()));
    file.commit();
}

CLI::Validator pictureName() {
    return CLI::Validator(
        [](const std::string& path) {
            return pictureFormatOf(path) ? std::string() : "must end in .png, .svg or .pdf, not " + path;
        },
        "", "picture");
}

void run(const ResponsesChoices& choices) {
    const ResponseChoice choice = chosenBy(choices);
    if (!choices.plot.empty() && !choices.source) {
        throw Failure(ExitCode::Usage, "--plot needs --set and --source");
    }
    installSignalHandlers();
    ResultStream result(ResultStream::Prints::ToStandardError);
    if (!choices.plot.empty()) writePlot(*choice.sets.front(), *choices.source, choices.plot);
    const std::vector<MeasuredSet> sets = measureSets(choice);
    result.write(choices.json ? responsesJson(sets) : choices.csv ? responsesCsv(sets) : responsesText(sets));
}

}  // namespace

std::function<void()> addResponsesCommand(CLI::App& program) {
    auto choices = std::make_shared<ResponsesChoices>();
    CLI::App* command =
        program.add_subcommand("responses", "Measure and plot the impulse responses of the surround effect");
    command->add_option("--set", choices->set, "Show only this set; the list shows the names")
        ->option_text("NAME")
        ->check(oneOf(setNames()));
    command->add_option("--source", choices->source, "Show only this loudspeaker of the set, counted from 1")
        ->option_text("N")
        ->check(CLI::Range(1, 8));
    command
        ->add_option("--plot", choices->plot,
                     "Plot the pair of --set and --source to a file, a picture of the\n"
                     "kind that its extension names: .png, .svg or .pdf. An existing\n"
                     "file is replaced")
        ->option_text("FILE")
        ->check(pictureName());
    CLI::Option* json = command->add_flag("--json", choices->json, "Print the figures as one JSON object");
    command
        ->add_flag("--csv", choices->csv,
                   "Print the figures as CSV, with a line for each octave of each\n"
                   "loudspeaker")
        ->excludes(json);
    return [choices] { run(*choices); };
}

}  // namespace sonivex_tool
