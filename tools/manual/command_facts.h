// Everything that the manual pages and the completions say about a command line, read from its parser.
#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace sonivex_manual {

/** The kinds of words that can complete a value. */
enum class ValueKind {
    Flag,      // there is no value
    Text,      // any word
    File,      // a path
    Folder,    // a path of a folder
    Preset,    // a name in `sonivex render --list-presets`, or a path
    Name,      // one of `names`
    NameList,  // some of `names` with commas between
};

/** An option such as `--effect NAME`. */
struct OptionFacts {
    std::string group;
    std::vector<std::string> spellings;  // with dashes, the short ones first
    std::string value;                   // as the help shows it; empty for a flag
    std::string help;                    // on one line
    ValueKind kind = ValueKind::Flag;
    std::vector<std::string> names;  // of values
    bool may_repeat = false;
};

/** A word without dashes, such as IN. All are files. */
struct ArgumentFacts {
    std::string name;
    std::string help;  // on one line
    bool is_required = false;
    bool may_repeat = false;
};

/** A command such as `sonivex render`, or the program itself. */
struct CommandFacts {
    std::string name;
    std::string summary;
    std::vector<OptionFacts> options;
    std::vector<ArgumentFacts> arguments;
    std::string footer;  // of the help, with its line breaks
};

/** The program and its commands, in the order of the help. */
struct ProgramFacts {
    CommandFacts program;
    std::vector<CommandFacts> commands;
};

/** Reads the facts from a parser, which stays unchanged. */
ProgramFacts readFacts(CLI::App& program);

}  // namespace sonivex_manual
