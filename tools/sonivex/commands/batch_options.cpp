#include "batch_options.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <csignal>
#include <map>
#include <optional>
#include <string_view>
#include <thread>

#include "batch_run.h"
#include "failure.h"
#include "interrupt.h"
#include "media_names.h"
#include "option_checks.h"
#include "render_choices.h"

namespace sonivex_tool {
namespace {

// Options that concern the batch as a whole, and those that each file's process gets anyway.
constexpr std::array<std::string_view, 9> kOwnOptions = {
    "batch", "output-folder", "jobs", "shard", "extension", "json", "quiet", "force", "verbose"};

int processors() {
    const auto count = static_cast<int>(std::thread::hardware_concurrency());
    return std::clamp(count, 1, kMostJobs);
}

std::optional<int> wholeNumber(std::string_view text) {
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

std::optional<Shard> parseShard(std::string_view text) {
    const size_t slash = text.find('/');
    if (slash == std::string_view::npos) return std::nullopt;
    const auto number = wholeNumber(text.substr(0, slash));
    const auto count = wholeNumber(text.substr(slash + 1));
    if (!number || !count || *count < 1 || *count > kMostShards || *number < 1 || *number > *count)
        return std::nullopt;
    return Shard{.number = *number, .count = *count};
}

CLI::Validator shardSyntax() {
    return {[](const std::string& text) {
                return parseShard(text) ? std::string()
                                        : "must be K/N with K from 1 to N, not \"" + text + "\"";
            },
            "", "shard"};
}

CLI::Validator bareExtension() {
    return {[](const std::string& text) {
                return isWritableExtension(text)
                           ? std::string()
                           : "must be the extension of an audio format, without the dot, not \"" + text +
                                 "\"";
            },
            "", "extension"};
}

bool isPassedOn(const CLI::Option& option) {
    if (option.get_positional() || option.get_lnames().empty()) return false;
    const std::string& name = option.get_lnames().front();
    return name != "help" && std::find(kOwnOptions.begin(), kOwnOptions.end(), name) == kOwnOptions.end();
}

// Spells one use of an option so that the same parser reads it again.
void appendUse(const CLI::Option& option, const std::string& value, std::vector<std::string>& arguments) {
    const std::string name = "--" + option.get_lnames().front();
    const bool is_flag = option.get_items_expected_max() == 0;
    if (is_flag && value == "true") {
        arguments.push_back(name);
    } else if (value.empty()) {
        arguments.insert(arguments.end(), {name, value});
    } else {
        arguments.push_back(name + "=" + value);
    }
}

}  // namespace

void BatchOptions::addTo(CLI::App& command) {
    command_ = &command;
    settings_.jobs = processors();
    const std::string group = "Many files";
    CLI::Option* batch = command.add_option("--batch", settings_.list,
                                            "Render many files: those that this text file lists, one per\n"
                                            "line, or the media files of this folder; - is standard input");
    batch->option_text("LIST")->check(notEmpty("a list or a folder"))->group(group);
    CLI::Option* folder = command.add_option("--output-folder,-o", settings_.output_folder,
                                             "The folder for the outputs. Outputs that are finished and\n"
                                             "up to date are skipped");
    folder->option_text("DIR")->check(notEmpty("a folder"))->group(group);
    CLI::Option* jobs = command.add_option("--jobs", settings_.jobs,
                                           "Files to render at once, 1 to 256; default: the number of\n"
                                           "processors");
    jobs->option_text("N")->check(CLI::Range(1, kMostJobs))->group(group);
    CLI::Option* shard = command.add_option_function<std::string>(
        "--shard", [this](const std::string& text) { settings_.shard = parseShard(text).value_or(Shard{}); },
        "Render only each N-th entry of LIST, from the K-th on");
    shard->option_text("K/N")->check(shardSyntax())->group(group);
    CLI::Option* extension = command.add_option("--extension", settings_.extension,
                                                "Extension of the outputs, which selects their format;\n"
                                                "default: that of each input");
    extension->option_text("EXT")->check(bareExtension())->group(group);

    batch->needs(folder);
    for (CLI::Option* other : {folder, jobs, shard, extension}) other->needs(batch);
    for (const char* other : {"IN", "OUT", "--dump", "--dry-run"}) batch->excludes(command.get_option(other));
}

void BatchOptions::collectArguments() {
    std::map<const CLI::Option*, size_t> uses;  // so far
    std::map<const CLI::Option*, size_t> all_uses;
    for (const CLI::Option* option : command_->parse_order()) ++all_uses[option];
    for (const CLI::Option* option : command_->parse_order()) {
        if (!isPassedOn(*option)) continue;
        const auto& values = option->results();
        const size_t use = uses[option]++;
        // One use of a list, such as A,B, holds several values.
        const bool is_one_each = all_uses[option] == values.size();
        const size_t begin = is_one_each ? use : 0;
        const size_t end = is_one_each ? use + 1 : (use == 0 ? values.size() : 0);
        for (size_t i = begin; i < end; ++i) {
            appendUse(*option, values[i], settings_.options);
            settings_.key_files.push_back(values[i]);
        }
    }
}

void BatchOptions::run(const std::vector<std::string>& key_files, const RenderChoices& choices,
                       Console& console, ResultStream& result) {
    settings_.key_files = key_files;
    collectArguments();
    settings_.replace_output = choices.settings.output.replace;
    settings_.verbose = choices.verbose;
    const auto& format = choices.settings.output.format;
    if (settings_.extension.empty() && format) settings_.extension = extensionOfFormat(*format);
    const BatchReport report = runBatch(settings_, console, [&](const BatchResult& file) {
        if (choices.json) result.write(asJson(file));
        const bool is_wrong = file.outcome == BatchOutcome::Failed || file.is_damaged;
        if (choices.quiet && is_wrong) printError(errorLine(file));
    });
    console.clearBar();
    if (choices.json) {
        result.write(asJson(report));
    } else if (!choices.quiet) {
        result.write(asText(report));
    }
    if (const int signal = pendingSignal()) {
        throw Failure(signal == SIGINT ? ExitCode::Interrupted : ExitCode::Terminated,
                      "interrupted; the same command continues where this one stopped");
    }
    const size_t total = report.rendered + report.skipped + report.failures.size();
    const std::string of_all = " of " + std::to_string(total) + (total == 1 ? " file" : " files");
    if (!report.failures.empty())
        throw Failure(ExitCode::BatchFailed, std::to_string(report.failures.size()) + of_all + " failed");
    if (report.damaged.empty()) return;
    throw Failure(ExitCode::InputDamaged,
                  "a part of " + std::to_string(report.damaged.size()) + of_all +
                      " is lost; the outputs hold the rest and are complete (--ignore-damage accepts this)");
}

}  // namespace sonivex_tool
