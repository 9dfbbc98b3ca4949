// sonivex_manual FOLDER DATE writes the manual pages and completions of the command line into the folders
// below FOLDER where man, bash, zsh and fish look for them below /usr/share.

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "command_facts.h"
#include "command_line.h"
#include "completions.h"
#include "man_page.h"

namespace {

namespace fs = std::filesystem;

void write(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text << std::flush;
    if (!file) throw std::runtime_error("cannot write \"" + path.string() + "\"");
}

void writeAll(const fs::path& folder, const std::string& date) {
    const sonivex_tool::CommandLine line = sonivex_tool::defineCommandLine();
    const sonivex_manual::ProgramFacts facts = sonivex_manual::readFacts(*line.program);
    const sonivex_manual::PageHeader header{.date = date, .version = SONIVEX_VERSION};
    write(folder / "man/man1/sonivex.1", programPage(facts, header));
    for (const auto& command : facts.commands)
        write(folder / "man/man1" / ("sonivex-" + command.name + ".1"), commandPage(command, header));
    write(folder / "bash-completion/completions/sonivex", bashCompletion(facts));
    write(folder / "zsh/site-functions/_sonivex", zshCompletion(facts));
    // The build takes this file as the sign that all are written, so it comes last.
    write(folder / "fish/vendor_completions.d/sonivex.fish", fishCompletion(facts));
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::cerr << "usage: sonivex_manual FOLDER DATE\n";
        return 2;
    }
    try {
        writeAll(argv[1], argv[2]);
    } catch (const std::exception& error) {
        std::cerr << "sonivex_manual: " << error.what() << "\n";
        return 1;
    }
    return 0;
}
