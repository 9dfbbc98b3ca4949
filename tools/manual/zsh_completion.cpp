#include "completions.h"
#include "shell_words.h"

namespace sonivex_manual {
namespace {

constexpr char kHead[] = R"zsh(#compdef sonivex
# Completion of sonivex for zsh. Written by the build from the options of the program.

_sonivex_presets() {
    local -a names
    names=(${(f)"$($sonivex_program render --list-presets 2>/dev/null)"})
    names=(${names%% *})
    _alternative 'presets:preset:compadd -a names' 'files:file:_files'
}

_sonivex() {
    local curcontext=$curcontext state state_descr line sonivex_program=$words[1]
    typeset -A opt_args
    local -a commands=(
)zsh";

constexpr char kChoice[] = R"zsh(            '1: :->command' '*:: :->rest'
    case $state in
    command) _describe -t commands command commands ;;
    rest)
        case $words[1] in
)zsh";

// Text in brackets of an option's description, between single quotes of the shell.
std::string described(const std::string& text) {
    std::string out;
    for (const char letter : text) {
        if (letter == '\'') {
            out += "'\\''";
        } else {
            if (letter == '[' || letter == ']' || letter == '\\' || letter == ':') out += '\\';
            out += letter;
        }
    }
    return out;
}

std::string valueAction(const OptionFacts& option) {
    switch (option.kind) {
        case ValueKind::Flag:
        case ValueKind::Text:
            return " ";
        case ValueKind::File:
            return "_files";
        case ValueKind::Folder:
            return "_path_files -/";
        case ValueKind::Preset:
            return "_sonivex_presets";
        case ValueKind::Name:
            return "(" + withEscapedParentheses(joined(option.names)) + ")";
        case ValueKind::NameList:
            return "_sequence compadd - " + withEscapedParentheses(joined(option.names));
    }
    return " ";
}

// One option as _arguments takes it. Options with two spellings exclude each other.
std::string optionSpec(const OptionFacts& option) {
    const bool has_two = option.spellings.size() > 1;
    std::string names;
    for (const std::string& spelling : option.spellings) {
        if (!names.empty()) names += ",";
        // The value is the next word, or follows a short option directly and a long one behind "=".
        const bool is_long = spelling.starts_with("--");
        names += spelling + (option.kind == ValueKind::Flag ? "" : is_long ? "=" : "+");
    }
    std::string excluded;
    if (option.may_repeat) {
        excluded = "*";
    } else if (has_two) {
        for (const std::string& spelling : option.spellings)
            excluded += (excluded.empty() ? "(" : " ") + spelling;
        excluded += ")";
    }
    std::string spec = "            '" + excluded;
    spec += has_two ? "'{" + names + "}'" : names;
    spec += "[" + described(option.help) + "]";
    if (option.kind == ValueKind::Flag) return spec + "' \\\n";
    // An option whose value has two words, as IN OUT, takes both.
    std::string values = option.value;
    do {
        const size_t end = values.find(' ');
        spec += ":" + described(values.substr(0, end)) + ":" + valueAction(option);
        values = end == std::string::npos ? "" : values.substr(end + 1);
    } while (!values.empty());
    return spec + "' \\\n";
}

std::string commandCase(const CommandFacts& command) {
    std::string text = "        " + command.name + ")\n            _arguments -S \\\n";
    for (const OptionFacts& option : command.options) text += optionSpec(option);
    for (const ArgumentFacts& argument : command.arguments) {
        text += "            '" + std::string(argument.may_repeat ? "*" : "") + ":" +
                described(argument.name) + ":_files' \\\n";
    }
    text.erase(text.size() - 3);  // the backslash after the last one
    return text + "\n            ;;\n";
}

}  // namespace

std::string zshCompletion(const ProgramFacts& facts) {
    std::string text = kHead;
    for (const CommandFacts& command : facts.commands)
        text += "        '" + command.name + ":" + described(command.summary) + "'\n";
    text += "    )\n    _arguments -C -S \\\n";
    for (const OptionFacts& option : facts.program.options) text += optionSpec(option);
    text += kChoice;
    for (const CommandFacts& command : facts.commands) text += commandCase(command);
    return text + "        esac\n        ;;\n    esac\n}\n\n_sonivex \"$@\"\n";
}

}  // namespace sonivex_manual
