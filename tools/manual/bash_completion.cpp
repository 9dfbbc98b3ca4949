#include "completions.h"
#include "shell_words.h"

namespace sonivex_manual {
namespace {

constexpr char kHead[] =
    R"(# Completion of sonivex for bash. Written by the build from the options of the program.

# Offers the words that begin with $current, as one types them: some names have parentheses.
_sonivex_words() {
    local word
    while read -r word; do
        printf -v word %q "$word"
        COMPREPLY+=("$word")
    done < <(compgen -W "$1" -- "$current")
}

# Offers one more name of a list with commas between.
_sonivex_list() {
    local before=
    if [[ $current == *,* ]]; then before=${current%,*},; fi
    mapfile -t COMPREPLY < <(compgen -P "$before" -W "$1" -- "${current##*,}")
    compopt -o nospace 2>/dev/null
}

# Offers paths; -d offers folders alone.
_sonivex_paths() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen "$1" -- "$current")
}

_sonivex_presets() {
    local names
    names=$("${COMP_WORDS[0]}" render --list-presets 2>/dev/null | cut -d ' ' -f 1)
    if [[ $current == */* ]]; then _sonivex_paths -f; else _sonivex_words "$names"; fi
}

_sonivex() {
    local current=${COMP_WORDS[COMP_CWORD]} option=${COMP_WORDS[COMP_CWORD - 1]} command= word
    COMPREPLY=()
    # The shell cuts --name=value into three words.
    if [[ $current == = ]]; then
        current=
    elif [[ $option == = ]]; then
        option=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        if [[ $word != -* ]]; then
            command=$word
            break
        fi
    done
)";

std::string optionNames(const CommandFacts& command) {
    std::string text;
    for (const OptionFacts& option : command.options)
        text += (text.empty() ? "" : " ") + joined(option.spellings);
    return text;
}

std::string valueCompletion(const OptionFacts& option) {
    switch (option.kind) {
        case ValueKind::Flag:
        case ValueKind::Text:
            return ":";
        case ValueKind::File:
            return "_sonivex_paths -f";
        case ValueKind::Folder:
            return "_sonivex_paths -d";
        case ValueKind::Preset:
            return "_sonivex_presets";
        case ValueKind::Name:
            return "_sonivex_words '" + withEscapedParentheses(joined(option.names)) + "'";
        case ValueKind::NameList:
            return "_sonivex_list '" + withEscapedParentheses(joined(option.names)) + "'";
    }
    return ":";
}

std::string valueCase(const CommandFacts& command, const OptionFacts& option) {
    std::string pattern;
    for (const std::string& spelling : option.spellings)
        pattern.append(pattern.empty() ? "" : " | ").append(command.name).append(":").append(spelling);
    return "        " + pattern + ") " + valueCompletion(option) + " ;;\n";
}

}  // namespace

std::string bashCompletion(const ProgramFacts& facts) {
    std::string values;
    std::string options;
    std::vector<std::string> commands;
    for (const CommandFacts& command : facts.commands) {
        commands.push_back(command.name);
        for (const OptionFacts& option : command.options) {
            if (option.kind != ValueKind::Flag) values += valueCase(command, option);
        }
        const std::string rest = command.arguments.empty() ? ":" : "_sonivex_paths -f";
        options += "        " + command.name + ":-*) _sonivex_words '" + optionNames(command) + "' ;;\n";
        options += "        " + command.name + ":*) " + rest + " ;;\n";
    }
    return kHead + ("    case $command:$option in\n" + values) +
           "        *)\n            case $command:$current in\n        :-*) _sonivex_words '" +
           optionNames(facts.program) + "' ;;\n        :*) _sonivex_words '" + joined(commands) + "' ;;\n" +
           options + "            esac\n            ;;\n    esac\n}\ncomplete -F _sonivex sonivex\n";
}

}  // namespace sonivex_manual
