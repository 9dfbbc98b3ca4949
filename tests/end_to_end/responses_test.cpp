// Runs `sonivex responses`, which lists and plots the impulse responses.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ResponsesCommand : public testing::Test {
  protected:
    static test::ProcessResult responses(const std::vector<std::string>& arguments) {
        std::vector<std::string> command = {SONIVEX_PROGRAM, "responses"};
        command.insert(command.end(), arguments.begin(), arguments.end());
        return test::runProcess(command);
    }

    test::TemporaryFolder folder_;
};

TEST_F(ResponsesCommand, ListsEveryTable) {
    const auto result = responses({"--json"});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    const auto document = nlohmann::json::parse(result.out);
    std::size_t tables = 0;
    for (const auto& set : document["sets"]) {
        for (const auto& source : set["sources"]) {
            EXPECT_TRUE(source["octaves"][3]["direct_to_reverberant_db"].is_number()) << source;
            for (const auto& table : source["tables"]) {
                ++tables;
                EXPECT_GT(table["peak"], 0.0) << table;
                EXPECT_TRUE(table["reverberation_s"].is_number()) << table;
            }
        }
    }
    EXPECT_EQ(tables, 117U);  // 58 pairs and the single response of the Audio stage
}

TEST_F(ResponsesCommand, AFrontLoudspeakerReachesTheNearEarFirstAndLouder) {
    const auto result = responses({"--set", "cingo", "--source", "2", "--json"});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    const auto document = nlohmann::json::parse(result.out);
    const auto& sources = document["sets"].at(0)["sources"];
    ASSERT_EQ(sources.size(), 1U);
    EXPECT_EQ(sources[0]["loudspeaker"], "front right");
    const auto& tables = sources[0]["tables"];
    EXPECT_EQ(tables[0]["ear"], "left");
    EXPECT_GT(tables[0]["arrival_samples"], tables[1]["arrival_samples"]);
    EXPECT_LT(tables[0]["energy_db"], tables[1]["energy_db"]);
    EXPECT_LT(sources[0]["interaural_delay_us"], -200.0);
    EXPECT_LT(sources[0]["level_difference_direct_db"], -3.0);
}

TEST_F(ResponsesCommand, PrintsALineOfCsvForEachOctave) {
    const auto result = responses({"--set", "bingo-7.1", "--source", "7", "--csv"});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    EXPECT_EQ(std::count(result.out.begin(), result.out.end(), '\n'), 1 + 8);
    EXPECT_THAT(result.out, HasSubstr("\r\nbingo-7.1,7,side left,48000,16000,"));
}

TEST_F(ResponsesCommand, PlotsAPairIntoAPngFile) {
    const std::string path = folder_.file("pair.PNG");
    const auto result = responses({"--set", "7.1-mode1", "--source", "5", "--plot", path});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    const std::string bytes = test::readFile(path);
    ASSERT_GT(bytes.size(), 50000U);  // an empty image takes about 6000 bytes
    EXPECT_EQ(bytes.substr(0, 8), "\x89PNG\r\n\x1a\n");
    EXPECT_THAT(bytes.substr(0, 200), HasSubstr("7.1-mode1, source 5: back right"));
    const auto big_endian = [&](std::size_t offset) {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            value = value << 8U | static_cast<unsigned char>(bytes.at(offset + i));
        }
        return value;
    };
    EXPECT_EQ(big_endian(16), 1400U);
    EXPECT_EQ(big_endian(20), 1280U);
    EXPECT_THAT(folder_.names(), ElementsAre("pair.PNG"));
}

TEST_F(ResponsesCommand, PlotsAPairIntoAnSvgFileThatNamesTheLoudspeaker) {
    const std::string path = folder_.file("pair.svg");
    ASSERT_EQ(responses({"--set", "bingo-7.1", "--source", "7", "--plot", path}).exit_code, 0);
    const std::string text = test::readFile(path);
    EXPECT_EQ(text.find("<?xml"), 0U);
    EXPECT_THAT(text, HasSubstr("<title>bingo-7.1, source 7: side left</title>"));
    EXPECT_EQ(text.substr(text.size() - 7), "</svg>\n");
}

TEST_F(ResponsesCommand, PlotsAPairIntoAPdfFile) {
    const std::string path = folder_.file("pair.Pdf");
    ASSERT_EQ(responses({"--set", "audio", "--source", "1", "--plot", path}).exit_code, 0);
    const std::string bytes = test::readFile(path);
    EXPECT_EQ(bytes.find("%PDF-"), 0U);
    EXPECT_EQ(bytes.substr(bytes.size() - 6), "%%EOF\n");
}

TEST_F(ResponsesCommand, RejectsWrongUsageWithOneLineAndLeavesNoFile) {
    struct Case {
        std::vector<std::string> arguments;
        int exit_code;
        std::string message;
    };
    const std::string path = folder_.file("pair.png");
    for (const Case& bad :
         {Case{{"--set", "nothing"}, 2, "nothing"}, Case{{"--source", "1"}, 2, "--set"},
          Case{{"--set", "cingo", "--source", "3"}, 2, "1 to 2"},
          Case{{"--set", "cingo", "--plot", path}, 2, "--source"}, Case{{"--json", "--csv"}, 2, "excludes"},
          Case{{"--set", "cingo", "--source", "1", "--plot", folder_.file("pair.jpg")},
               2,
               "must end in .png, .svg or .pdf"},
          Case{{"--set", "cingo", "--source", "1", "--plot", folder_.file("pair")}, 2, "pair"},
          Case{{"--set", "cingo", "--source", "1", "--plot", folder_.file("no/pair.png")},
               7,
               "No such file or directory"}}) {
        const auto result = responses(bad.arguments);
        EXPECT_EQ(result.exit_code, bad.exit_code) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.find("sonivex: "), 0U);
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1);
        EXPECT_THAT(result.err, HasSubstr(bad.message));
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder_.file("")));
}

TEST_F(ResponsesCommand, RefusesAFolderInPlaceOfThePicture) {
    std::filesystem::create_directory(folder_.file("pair.svg"));
    const auto result = responses({"--set", "cingo", "--source", "1", "--plot", folder_.file("pair.svg")});
    EXPECT_EQ(result.exit_code, 6);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.err, HasSubstr("it is a folder"));
}

TEST_F(ResponsesCommand, KeepsTheOldPictureAndLeavesNoPartIfThereIsNoSpace) {
    for (const char* name : {"pair.png", "pair.svg", "pair.pdf"}) {
        SCOPED_TRACE(name);
        test::writeFile(folder_.file(name), "old");
        const auto result = test::runProcess(
            {SONIVEX_PROGRAM, "responses", "--set", "cingo", "--source", "1", "--plot", folder_.file(name)},
            {.file_size_limit_bytes = 20000, .working_folder = ""});
        EXPECT_EQ(result.exit_code, 8) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(test::readFile(folder_.file(name)), "old");
    }
    EXPECT_THAT(folder_.names(), ElementsAre("pair.pdf", "pair.png", "pair.svg"));
}

}  // namespace
