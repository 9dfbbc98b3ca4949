#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"

namespace test {

/** Runs `sonivex render` on files in a temporary folder. */
class RenderTest : public testing::Test {
  protected:
    /** Returns the path of a file in the temporary folder. */
    std::string file(const std::string& name) const { return folder_.file(name); }

    /** Returns the command line `sonivex render <arguments>`. */
    static std::vector<std::string> command(const std::vector<std::string>& arguments);
    /** Runs `sonivex render <arguments>` to its end. */
    static ProcessResult run(const std::vector<std::string>& arguments, const ProcessOptions& options = {});

    /** Runs the program in a shell that applies `redirections` first, such as "2>&-". */
    static ProcessResult runRedirected(const std::string& redirections,
                                       const std::vector<std::string>& arguments);

    /** Runs the program with --json and parses its report. Fails the test if the exit code is not 0. */
    static nlohmann::json render(const std::vector<std::string>& arguments);

    TemporaryFolder folder_;
};

}  // namespace test
