#include "completions.h"
#include "shell_words.h"

namespace sonivex_manual {
namespace {

std::string quoted(const std::string& text) {
    std::string out = "'";
    for (const char letter : text) {
        if (letter == '\'' || letter == '\\') out += '\\';
        out += letter;
    }
    return out + "'";
}

std::string valueArguments(const OptionFacts& option) {
    switch (option.kind) {
        case ValueKind::Flag:
            return "";
        case ValueKind::Text:
            return " -x";
        case ValueKind::File:
            return " -r -F";
        case ValueKind::Folder:
            return " -x -a '(__fish_complete_directories (commandline -ct))'";
        case ValueKind::Preset:
            return " -r -F -a '(__sonivex_presets)'";
        case ValueKind::Name:
            return " -x -a " + quoted(withEscapedParentheses(joined(option.names)));
        case ValueKind::NameList:
            return " -x -a '(__fish_append , " + withEscapedParentheses(joined(option.names)) + ")'";
    }
    return "";
}

std::string optionLine(const std::string& condition, const OptionFacts& option) {
    std::string line = "complete -c sonivex -n " + quoted(condition);
    for (const std::string& spelling : option.spellings)
        line += spelling.starts_with("--") ? " -l " + spelling.substr(2) : " -s " + spelling.substr(1);
    return line + valueArguments(option) + " -d " + quoted(option.help) + "\n";
}

}  // namespace

std::string fishCompletion(const ProgramFacts& facts) {
    std::string text =
        R"(# Completion of sonivex for fish. Written by the build from the options of the program.

function __sonivex_presets
    set -l words (commandline -opc)
    $words[1] render --list-presets 2>/dev/null | string replace -r '^(\S+)\s+(.*?)\s\s+.*$' '$1\t$2'
end

complete -c sonivex -f
)";
    for (const OptionFacts& option : facts.program.options)
        text += optionLine("__fish_use_subcommand", option);
    for (const CommandFacts& command : facts.commands) {
        text += "complete -c sonivex -n __fish_use_subcommand -a " + command.name + " -d " +
                quoted(command.summary) + "\n";
        const std::string condition = "__fish_seen_subcommand_from " + command.name;
        if (!command.arguments.empty()) text += "complete -c sonivex -n " + quoted(condition) + " -F\n";
        for (const OptionFacts& option : command.options) text += optionLine(condition, option);
    }
    return text;
}

}  // namespace sonivex_manual
