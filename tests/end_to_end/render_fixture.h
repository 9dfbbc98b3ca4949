#pragma once

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "support/process.h"
#include "support/temporary_folder.h"

namespace test {

/** A folder of its own, and the program. */
class RenderTest : public testing::Test {
  protected:
    std::string file(const std::string& name) const { return folder_.file(name); }

    /** The command line `sonivex render <arguments>`. */
    static std::vector<std::string> command(const std::vector<std::string>& arguments);
    static ProcessResult run(const std::vector<std::string>& arguments, const ProcessOptions& options = {});

    /** Run after a shell has applied `redirections`, such as "2>&-". */
    static ProcessResult runRedirected(const std::string& redirections,
                                       const std::vector<std::string>& arguments);

    /** Run with --json, which must succeed, and parse what it prints. */
    static nlohmann::json render(const std::vector<std::string>& arguments);

    TemporaryFolder folder_;
};

}  // namespace test
