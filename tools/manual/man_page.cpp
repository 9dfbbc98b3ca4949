#include "man_page.h"

#include <algorithm>
#include <cctype>
#include <sstream>

#include "page_texts.h"

namespace sonivex_manual {
namespace {

constexpr size_t kLongestLine = 78;

// Writes text so that the formatter changes nothing in it. A hyphen would become a typographic one, which
// nobody can copy into a command line. `word` between backquotes becomes bold.
std::string escaped(const std::string& text) {
    std::string out;
    bool is_bold = false;
    for (const char letter : text) {
        switch (letter) {
            case '\\':
                out += "\\e";
                break;
            case '-':
                out += "\\-";
                break;
            case '~':
                out += "\\(ti";
                break;
            case '\'':
                out += "\\(aq";
                break;
            case '`':
                out += is_bold ? "\\fR" : "\\fB";
                is_bold = !is_bold;
                break;
            default:
                out += letter;
        }
    }
    return out;
}

// A line that begins with a dot is a request to the formatter.
std::string protectedLine(const std::string& line) {
    return line.starts_with('.') ? "\\&" + line : line;
}

// Breaks text into lines for the reader of the source. A sentence begins a line, because the formatter spaces
// sentences by that.
std::string filled(const std::string& text) {
    std::string out;
    std::string line;
    const auto close = [&] {
        if (!line.empty()) out += protectedLine(line) + "\n";
        line.clear();
    };
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (line.size() + 1 + word.size() > kLongestLine) close();
        line += (line.empty() ? "" : " ") + word;
        if (word.ends_with('.')) close();
    }
    close();
    return out;
}

std::string paragraph(const std::string& text) {
    return filled(escaped(text));
}

std::string bold(const std::string& text) {
    return "\\fB" + escaped(text) + "\\fR";
}

std::string italic(const std::string& text) {
    return "\\fI" + escaped(text) + "\\fR";
}

std::string upper(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return std::toupper(letter); });
    return text;
}

std::string title(const std::string& name, const PageHeader& header) {
    return ".\\\" Written by the build from the options of the program.\n.TH " + upper(escaped(name)) +
           " 1 " + header.date + " \"Sonivex " + header.version + "\" \"Sonivex manual\"\n";
}

std::string optionEntry(const OptionFacts& option) {
    std::string entry = ".TP\n";
    for (size_t i = 0; i < option.spellings.size(); ++i)
        entry += (i == 0 ? "" : ", ") + bold(option.spellings[i]);
    if (!option.value.empty()) entry += " " + italic(option.value);
    entry += "\n" + paragraph(option.help + (option.help.ends_with('.') ? "" : "."));
    return entry;
}

// The groups in the order in which they first appear. Their options follow each other in the help, too.
std::string optionSections(const std::vector<OptionFacts>& options) {
    std::vector<std::string> groups;
    for (const OptionFacts& option : options) {
        if (std::find(groups.begin(), groups.end(), option.group) == groups.end())
            groups.push_back(option.group);
    }
    std::string text = ".SH OPTIONS\n";
    for (const std::string& group : groups) {
        if (groups.size() > 1 && group != "Options") text += ".SS " + escaped(group) + "\n";
        for (const OptionFacts& option : options) {
            if (option.group == group) text += optionEntry(option);
        }
    }
    return text;
}

// Lines that must stay lines.
std::string verbatim(const std::string& lines) {
    std::string text = ".nf\n";
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);) text += protectedLine(escaped(line)) + "\n";
    return text + ".fi\n";
}

// The end of the help. A paragraph whose first line ends with a colon is a list under a heading.
std::string footerSections(const std::string& footer) {
    std::string prose;
    std::string lists;
    std::istringstream in(footer);
    std::string block;
    const auto close = [&] {
        const size_t line_end = block.find('\n');
        if (line_end != std::string::npos && line_end > 0 && block[line_end - 1] == ':') {
            const std::string heading = block.substr(0, line_end - 1);
            lists += ".SH " + upper(heading == "Exit codes" ? "Exit status" : heading) + "\n" +
                     verbatim(block.substr(line_end + 1));
        } else if (!block.empty()) {
            std::replace(block.begin(), block.end(), '\n', ' ');
            block.pop_back();
            prose += (prose.empty() ? "" : ".PP\n") + paragraph(block);
        }
        block.clear();
    };
    for (std::string line; std::getline(in, line);) {
        if (line.empty()) {
            close();
        } else {
            block += line + "\n";
        }
    }
    close();
    return (prose.empty() ? "" : ".SH NOTES\n" + prose) + lists;
}

std::string argumentText(const ArgumentFacts& argument) {
    const std::string name = italic(argument.name) + (argument.may_repeat ? "..." : "");
    return argument.is_required ? name : "[" + name + "]";
}

std::string examplesSection(const std::string& command) {
    const auto examples = examplesOf(command);
    if (examples.empty()) return {};
    std::string text = ".SH EXAMPLES\n";
    for (const Example& example : examples)
        text += ".TP\n" + bold(example.command) + "\n" + paragraph(example.purpose);
    return text;
}

std::string placesSection(const std::string& heading, const std::vector<Place>& places) {
    std::string text = ".SH " + heading + "\n";
    for (const Place& place : places) text += ".TP\n" + italic(place.name) + "\n" + paragraph(place.purpose);
    return text;
}

}  // namespace

std::string programPage(const ProgramFacts& facts, const PageHeader& header) {
    const std::string& name = facts.program.name;
    std::string text = title(name, header);
    text += ".SH NAME\n" + name + " \\- run audio effects on files, and measure the results\n";
    text += ".SH SYNOPSIS\n" + bold(name) + " [" + italic("OPTIONS") + "] " + italic("COMMAND") + " [" +
            italic("ARGUMENTS") + "]\n";
    text += ".SH DESCRIPTION\n" + paragraph(facts.program.summary + ".");
    text +=
        paragraph("Each command has a page of its own. `sonivex COMMAND --help` prints its options as well.");
    text += ".SH COMMANDS\n";
    for (const CommandFacts& command : facts.commands)
        text += ".TP\n" + bold(command.name) + "\n" + paragraph(command.summary + ".");
    text += optionSections(facts.program.options);
    text +=
        ".SH EXIT STATUS\nAll commands end with the codes that\n.BR sonivex\\-render (1)\nlists; 0 is "
        "success.\n";
    text += placesSection("FILES", files());
    text += placesSection("ENVIRONMENT", variables());
    text += ".SH SEE ALSO\n";
    for (size_t i = 0; i < facts.commands.size(); ++i) {
        text += ".BR " + escaped(name + "-" + facts.commands[i].name) + " (1)" +
                (i + 1 < facts.commands.size() ? "," : "") + "\n";
    }
    return text;
}

std::string commandPage(const CommandFacts& command, const PageHeader& header) {
    const std::string name = "sonivex-" + command.name;
    std::string summary = command.summary;
    summary.front() = static_cast<char>(std::tolower(static_cast<unsigned char>(summary.front())));
    std::string text = title(name, header);
    text += ".SH NAME\n" + filled(escaped(name) + " \\- " + escaped(summary));
    text += ".SH SYNOPSIS\n" + bold("sonivex " + command.name) + " [" + italic("OPTIONS") + "]";
    for (const ArgumentFacts& argument : command.arguments) text += " " + argumentText(argument);
    text += "\n.SH DESCRIPTION\n" + paragraph(command.summary + ".");
    for (const ArgumentFacts& argument : command.arguments) {
        text += ".TP\n" + italic(argument.name) + "\n" +
                paragraph(argument.help + (argument.help.ends_with('.') ? "" : "."));
    }
    text += optionSections(command.options);
    text += footerSections(command.footer);
    text += examplesSection(command.name);
    text += ".SH SEE ALSO\n.BR sonivex (1)\n";
    return text;
}

}  // namespace sonivex_manual
