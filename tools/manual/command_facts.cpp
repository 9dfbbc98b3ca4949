#include "command_facts.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "value_names.h"

namespace sonivex_manual {
namespace {

// The help breaks its lines for a column of the screen.
std::string onOneLine(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

bool isOneOf(const std::string& word, const std::vector<std::string>& words) {
    return std::find(words.begin(), words.end(), word) != words.end();
}

// A value that names several, such as IN OUT, is a list of files if the first one is.
ValueKind kindOf(const std::string& value, const sonivex_tool::ValueNames& names) {
    if (!names.names.empty()) return names.is_list ? ValueKind::NameList : ValueKind::Name;
    const std::string first = value.substr(0, value.find(' '));
    if (isOneOf(first, {"FILE", "IN", "LIST"})) return ValueKind::File;
    if (isOneOf(first, {"FOLDER", "DIR"})) return ValueKind::Folder;
    if (first == "NAME|FILE") return ValueKind::Preset;
    return ValueKind::Text;
}

OptionFacts optionFacts(CLI::Option& option) {
    OptionFacts facts;
    facts.group = option.get_group();
    facts.help = onOneLine(option.get_description());
    for (const std::string& name : option.get_snames()) facts.spellings.push_back("-" + name);
    for (const std::string& name : option.get_lnames()) facts.spellings.push_back("--" + name);
    if (option.get_items_expected_max() == 0) return facts;
    facts.value = option.get_option_text();
    const sonivex_tool::ValueNames names = sonivex_tool::valueNames(option);
    facts.kind = kindOf(facts.value, names);
    facts.names = names.names;
    // A list that takes one value at a time grows with each use.
    facts.may_repeat = option.get_items_expected_max() > 1 && !option.get_allow_extra_args() &&
                       option.get_items_expected_min() == 1;
    return facts;
}

ArgumentFacts argumentFacts(const CLI::Option& option) {
    return {.name = option.get_name(true),
            .help = onOneLine(option.get_description()),
            .is_required = option.get_required(),
            .may_repeat = option.get_items_expected_max() > 1};
}

CommandFacts commandFacts(CLI::App& command) {
    CommandFacts facts{.name = command.get_name(),
                       .summary = command.get_description(),
                       .options = {},
                       .arguments = {},
                       .footer = command.get_footer()};
    for (CLI::Option* option : command.get_options()) {
        if (option->get_positional()) {
            facts.arguments.push_back(argumentFacts(*option));
        } else {
            facts.options.push_back(optionFacts(*option));
        }
    }
    return facts;
}

}  // namespace

ProgramFacts readFacts(CLI::App& program) {
    ProgramFacts facts{.program = commandFacts(program), .commands = {}};
    for (CLI::App* command : program.get_subcommands([](CLI::App*) { return true; }))
        facts.commands.push_back(commandFacts(*command));
    return facts;
}

}  // namespace sonivex_manual
