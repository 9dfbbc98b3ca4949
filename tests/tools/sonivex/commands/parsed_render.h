#pragma once

#include <memory>
#include <string>
#include <vector>

#include "render_choices.h"

namespace test {

/** The command line of `render`, parsed and checked as the program does it.
 *  @throws CLI::ParseError, sonivex_tool::Failure */
inline sonivex_tool::RenderChoices parsedRender(const std::vector<std::string>& arguments) {
    CLI::App app("", "render");
    sonivex_tool::RenderChoices choices;
    sonivex_tool::addRenderOptions(app, choices);
    std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
    app.parse(reversed);
    sonivex_tool::checkChoices(choices);
    return choices;
}

}  // namespace test
