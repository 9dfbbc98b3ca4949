// Runs `sonivex responses`, which lists and plots the impulse responses.

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"

namespace {

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
    const auto rows = nlohmann::json::parse(result.out);
    EXPECT_EQ(rows.size(), 117U);  // 58 pairs and the single response of the Audio stage
    for (const auto& row : rows) {
        EXPECT_GT(row["peak"], 0.0) << row;
        EXPECT_TRUE(row["reverberation_s"].is_number()) << row;
    }
}

TEST_F(ResponsesCommand, AFrontLoudspeakerReachesTheNearEarFirstAndLouder) {
    const auto result = responses({"--set", "cingo", "--source", "2", "--json"});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    const auto rows = nlohmann::json::parse(result.out);
    ASSERT_EQ(rows.size(), 2U);
    EXPECT_EQ(rows[0]["ear"], "left");
    EXPECT_GT(rows[0]["arrival_samples"], rows[1]["arrival_samples"]);
    EXPECT_LT(rows[0]["energy_db"], rows[1]["energy_db"]);
}

TEST_F(ResponsesCommand, PlotsAPairIntoAPngFile) {
    const std::string path = folder_.file("pair.png");
    const auto result = responses({"--set", "7.1-mode1", "--source", "5", "--plot", path});
    ASSERT_EQ(result.exit_code, 0) << result.err;
    std::ifstream stream(path, std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    ASSERT_GT(bytes.size(), 20000U);  // an empty image takes about 5000 bytes
    EXPECT_EQ(std::string(bytes.data(), 8), "\x89PNG\r\n\x1a\n");
    const auto big_endian = [&](size_t offset) {
        std::uint32_t value = 0;
        for (size_t i = 0; i < 4; ++i) value = value << 8U | static_cast<unsigned char>(bytes.at(offset + i));
        return value;
    };
    EXPECT_EQ(big_endian(16), 1200U);
    EXPECT_EQ(big_endian(20), 1350U);
}

TEST_F(ResponsesCommand, RejectsWrongUsageWithOneLineAndLeavesNoFile) {
    struct Case {
        std::vector<std::string> arguments;
        int exit_code;
    };
    const std::string path = folder_.file("pair.png");
    for (const Case& bad :
         {Case{{"--set", "nothing"}, 2}, Case{{"--source", "1"}, 2},
          Case{{"--set", "cingo", "--source", "3"}, 2}, Case{{"--set", "cingo", "--plot", path}, 2},
          Case{{"--set", "cingo", "--source", "1", "--plot", folder_.file("no/pair.png")}, 7}}) {
        const auto result = responses(bad.arguments);
        EXPECT_EQ(result.exit_code, bad.exit_code) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.err.find("sonivex: "), 0U);
        EXPECT_EQ(result.err.find('\n'), result.err.size() - 1);
    }
    EXPECT_TRUE(std::filesystem::is_empty(folder_.file("")));
}

}  // namespace
