#include "usage_error.h"

#include <vector>

#include "nearest_word.h"

namespace sonivex_tool {
namespace {

std::vector<std::string> commandNames(const CLI::App& program) {
    std::vector<std::string> names;
    for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; }))
        names.push_back(command->get_name());
    return names;
}

std::vector<std::string> longOptionNames(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) names.push_back(name);
    }
    return names;
}

bool isOption(const std::string& word) {
    return word.size() > 1 && word.front() == '-';
}

// "--name=value" -> "name". A single dash is taken for a mistyped double one.
std::string nameOfOption(const std::string& word) {
    const size_t start = word.find_first_not_of('-');
    if (start == std::string::npos) return {};
    return word.substr(start, word.find('=') - start);
}

std::string unknownOption(const CLI::App& app, const std::string& word) {
    const auto nearest = nearestWord(nameOfOption(word), longOptionNames(app));
    return "unknown option \"" + word.substr(0, word.find('=')) + "\"" +
           (nearest ? "; did you mean \"--" + *nearest + "\"?" : "");
}

// The first word before the command that the program does not know; empty if there is none.
std::string explainWordsOf(const CLI::App& program, const std::vector<std::string>& words) {
    if (words.empty()) return {};
    const std::string& word = words.front();
    if (isOption(word)) {
        for (const CLI::App* command : program.get_subcommands([](const CLI::App*) { return true; })) {
            if (command->get_option_no_throw("--" + nameOfOption(word)) != nullptr)
                return "option \"" + word + "\" must follow a command";
        }
        return unknownOption(program, word);
    }
    return "unknown command \"" + word + "\"" + didYouMean(word, commandNames(program));
}

// An unknown option explains an error better than the words that its value shifted.
std::string explainWordsOfCommand(const CLI::App& command, const std::vector<std::string>& words) {
    for (const std::string& word : words) {
        if (isOption(word)) return unknownOption(command, word);
    }
    return words.empty() ? std::string() : "unexpected argument \"" + words.front() + "\"";
}

std::string noCommand(const CLI::App& program) {
    std::string names;
    for (const std::string& name : commandNames(program)) names += (names.empty() ? "" : ", ") + name;
    return "no command given; the commands are " + names;
}

}  // namespace

std::string explainUsageError(const CLI::App& program, const CLI::ParseError& error) {
    const auto commands = program.get_subcommands();
    std::string line = explainWordsOf(program, program.remaining());
    std::string help = "sonivex --help";
    if (line.empty() && commands.empty()) line = noCommand(program);
    if (line.empty()) {
        const CLI::App& command = *commands.front();
        line = explainWordsOfCommand(command, command.remaining());
        help = "sonivex " + command.get_name() + " --help";
    }
    if (line.empty()) line = error.what();
    return line + " (try \"" + help + "\")";
}

}  // namespace sonivex_tool
