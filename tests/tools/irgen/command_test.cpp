#include "command.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "replacement_file.h"
#include "support/processes/process.h"
#include "tools/irgen/heads/synthetic_head.h"

namespace {

using namespace sonivex_irgen;

class IrgenCommand : public testing::Test {
  protected:
    void SetUp() override { std::filesystem::create_directory(folder_); }
    void TearDown() override { std::filesystem::remove_all(folder_); }

    int run(const std::vector<std::string>& arguments, const std::string& default_sofa = "") {
        out_.str("");
        err_.str("");
        return runCommand(arguments, default_sofa, out_, err_);
    }

    std::string inFolder(const std::string& name) const { return (folder_ / name).string(); }
    bool isFolderEmpty() const { return std::filesystem::is_empty(folder_); }
    bool isOneLine() const {
        const std::string text = err_.str();
        return !text.empty() && text.back() == '\n' && std::count(text.begin(), text.end(), '\n') == 1;
    }

    const std::filesystem::path folder_ =
        std::filesystem::temp_directory_path() / ("sonivex-irgen-" + std::to_string(getpid()));
    std::ostringstream out_;
    std::ostringstream err_;
};

TEST_F(IrgenCommand, WrongUsageExitsWithCodeTwo) {
    using Arguments = std::vector<std::string>;
    for (const Arguments& arguments :
         {Arguments{}, Arguments{"--out"}, Arguments{"--sofa", "x"}, Arguments{"--report"},
          Arguments{"--out", "x", "--what"}, Arguments{"--out", "x", "y"}}) {
        EXPECT_EQ(run(arguments, "default.sofa"), 2);
        EXPECT_EQ(err_.str(), "usage: sonivex-irgen [--sofa FILE] --out FILE [--report]\n");
    }
    EXPECT_EQ(run({"--out", inFolder("x.cpp")}, ""), 2) << "without --sofa there is no file to use";
}

TEST_F(IrgenCommand, UnusableSofaFileExitsWithCodeThreeAndIsNamedInOneLine) {
    const std::string sofa = inFolder("missing.sofa");
    EXPECT_EQ(run({"--sofa", sofa, "--out", inFolder("x.cpp")}), 3);
    EXPECT_EQ(err_.str(), sofa + ": cannot be read as a SOFA file: No such file or directory\n");
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(IrgenCommand, IsAProgramWithTheSameExitCodesAndMessages) {
    const auto wrong = test::runProcess({SONIVEX_IRGEN, "--what"});
    EXPECT_EQ(wrong.exit_code, 2);
    EXPECT_EQ(wrong.err, "usage: sonivex-irgen [--sofa FILE] --out FILE [--report]\n");
    const std::string sofa = inFolder("missing.sofa");
    const auto missing = test::runProcess({SONIVEX_IRGEN, "--sofa", sofa, "--out", inFolder("x.cpp")});
    EXPECT_EQ(missing.exit_code, 3);
    EXPECT_EQ(missing.err, sofa + ": cannot be read as a SOFA file: No such file or directory\n");
}

TEST_F(IrgenCommand, GivenSofaFileOverridesTheDefault) {
    EXPECT_EQ(run({"--out", inFolder("x.cpp")}, inFolder("default.sofa")), 3);
    EXPECT_EQ(err_.str().find(inFolder("default.sofa")), 0U);
    EXPECT_EQ(run({"--out", inFolder("x.cpp"), "--sofa", inFolder("own.sofa")}, inFolder("default.sofa")), 3);
    EXPECT_EQ(err_.str().find(inFolder("own.sofa")), 0U);
}

TEST_F(IrgenCommand, UnwritableOutputExitsWithCodeFour) {
    SONIVEX_NEED_PACKAGED_HEAD();
    EXPECT_EQ(run({"--out", inFolder("no/such/folder/x.cpp")}, SONIVEX_DEFAULT_SOFA), 4);
    EXPECT_TRUE(isOneLine());
    EXPECT_TRUE(isFolderEmpty());
}

TEST_F(IrgenCommand, DevicesPipesAndLinksAreNotReplaced) {
    SONIVEX_NEED_PACKAGED_HEAD();
    const std::string pipe = inFolder("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    const std::string link = inFolder("link");
    std::filesystem::create_symlink(inFolder("elsewhere"), link);
    for (const std::string& path : {pipe, link, folder_.string()}) {
        EXPECT_EQ(run({"--out", path}, SONIVEX_DEFAULT_SOFA), 4);
        EXPECT_EQ(err_.str(), path + ": not a regular file\n");
    }
    EXPECT_TRUE(std::filesystem::is_fifo(pipe));
    EXPECT_TRUE(std::filesystem::is_symlink(std::filesystem::symlink_status(link)));
}

TEST_F(IrgenCommand, WritesTheTablesAndReportsEverySet) {
    SONIVEX_NEED_PACKAGED_HEAD();
    ASSERT_EQ(run({"--report", "--out", inFolder("x.cpp")}, SONIVEX_DEFAULT_SOFA), 0);
    EXPECT_EQ(err_.str(), "");
    EXPECT_NE(out_.str().find("head radius 0.08426 m"), std::string::npos);
    for (const char* set :
         {"cingo", "Bingo 5_1", "Bingo 7_1", "Audio", "2 mode1", "5_1 mode2", "7_1 mode3"}) {
        EXPECT_NE(out_.str().find(std::string("\n") + set), std::string::npos) << set;
    }
    // The temporary file is gone.
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_), {}), 1);
    EXPECT_GT(std::filesystem::file_size(folder_ / "x.cpp"), 2000000U);
}

TEST_F(IrgenCommand, FailedWriteKeepsTheOldFileAndLeavesNoPartialOne) {
    // A folder has the file's name.
    std::filesystem::create_directory(folder_ / "taken.cpp");
    EXPECT_THROW(ReplacementFile(inFolder("taken.cpp")).commit("text"), UnwritableOutput);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_), {}), 1);
    EXPECT_TRUE(std::filesystem::is_directory(folder_ / "taken.cpp"));

    // The temporary file is on a full device.
    if (std::filesystem::exists("/dev/full")) {
        std::filesystem::create_directory(folder_ / "sub");
        const std::string temporary = inFolder("sub/x.cpp") + ".part" + std::to_string(getpid());
        std::filesystem::create_symlink("/dev/full", temporary);
        std::ofstream(folder_ / "sub" / "x.cpp") << "old";
        EXPECT_THROW(ReplacementFile(inFolder("sub/x.cpp")).commit(std::string(100000, 'x')),
                     UnwritableOutput);
        EXPECT_EQ(std::filesystem::file_size(folder_ / "sub" / "x.cpp"), 3U);
        EXPECT_FALSE(std::filesystem::exists(std::filesystem::symlink_status(temporary)));
    }
}

}  // namespace
