#include "command_line.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>

namespace {

using sonivex_tool::CommandLine;
using sonivex_tool::defineCommandLine;

std::vector<CLI::App*> commandsOf(const CommandLine& line) {
    return line.program->get_subcommands([](CLI::App*) { return true; });
}

TEST(CommandLine, EveryCommandHasAFunctionAndEveryFunctionACommand) {
    const CommandLine line = defineCommandLine();
    std::set<std::string> parsed;
    for (const CLI::App* command : commandsOf(line)) parsed.insert(command->get_name());
    std::set<std::string> run;
    for (const auto& [name, function] : line.commands) {
        EXPECT_TRUE(function) << name;
        run.insert(name);
    }
    EXPECT_EQ(parsed, run);
    EXPECT_FALSE(run.empty());
}

TEST(CommandLine, EveryCommandAndEveryOptionSaysWhatItIsFor) {
    const CommandLine line = defineCommandLine();
    for (const CLI::App* command : commandsOf(line)) {
        EXPECT_NE(command->get_description(), "") << command->get_name();
        for (const CLI::Option* option : command->get_options())
            EXPECT_NE(option->get_description(), "") << command->get_name() << " " << option->get_name();
    }
}

TEST(CommandLine, CanBeDefinedMoreThanOnce) {
    const CommandLine first = defineCommandLine();
    const CommandLine second = defineCommandLine();
    EXPECT_EQ(first.program->help(), second.program->help());
}

}  // namespace
