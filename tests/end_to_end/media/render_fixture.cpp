#include "end_to_end/media/render_fixture.h"

namespace test {

std::vector<std::string> RenderTest::command(const std::vector<std::string>& arguments) {
    std::vector<std::string> all = {SONIVEX_PROGRAM, "render"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    return all;
}

ProcessResult RenderTest::run(const std::vector<std::string>& arguments, const ProcessOptions& options) {
    return runProcess(command(arguments), options);
}

ProcessResult RenderTest::runRedirected(const std::string& redirections,
                                        const std::vector<std::string>& arguments) {
    std::vector<std::string> all = {"sh", "-c", "exec \"$@\" " + redirections, "sh"};
    const auto program = command(arguments);
    all.insert(all.end(), program.begin(), program.end());
    return runProcess(all);
}

nlohmann::json RenderTest::render(const std::vector<std::string>& arguments) {
    std::vector<std::string> all = arguments;
    all.emplace_back("--json");
    const ProcessResult result = run(all);
    EXPECT_EQ(result.exit_code, 0) << result.err;
    return nlohmann::json::parse(result.out);
}

}  // namespace test
