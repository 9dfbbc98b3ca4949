#include "batch_plan.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "failure.h"
#include "support/processes/temporary_folder.h"

namespace {

using sonivex_tool::BatchItem;
using sonivex_tool::BatchSettings;
using sonivex_tool::Failure;
using sonivex_tool::ListEntry;
using sonivex_tool::outputName;
using sonivex_tool::planBatch;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

ListEntry entry(const std::string& input, const std::string& output = "", const std::string& folder = "") {
    return {.input = input, .output = output, .folder = folder};
}

BatchSettings into(const std::string& folder) {
    BatchSettings settings;
    settings.output_folder = folder;
    return settings;
}

std::string refusal(const std::vector<ListEntry>& entries, const BatchSettings& settings) {
    try {
        planBatch(entries, settings);
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), sonivex_tool::ExitCode::Usage);
        return failure.what();
    }
    return "";
}

TEST(BatchPlan, NamesOutputsAfterInputsWithTheirOwnExtension) {
    EXPECT_EQ(outputName("a/b.flac", ""), "b.flac");
    EXPECT_EQ(outputName("a/b.c.MP3", ""), "b.c.MP3");
    EXPECT_EQ(outputName("a/b.flac", "ogg"), "b.ogg");
}

TEST(BatchPlan, WritesWavWhereTheInputsFormatCannotBeWritten) {
    EXPECT_EQ(outputName("a.ape", ""), "a.wav");
    EXPECT_EQ(outputName("a", ""), "a.wav");
}

TEST(BatchPlan, PutsOutputsIntoTheFolderAndItsSubFolders) {
    const auto items = planBatch({entry("in/a.wav"), entry("in/b.wav", "x/y.flac"),
                                  entry("in/s/c.wav", "", "s"), entry("in/d.wav", "", ".")},
                                 into("out"));
    std::vector<std::string> outputs;
    for (const BatchItem& item : items) outputs.push_back(item.output + " " + item.name);
    EXPECT_THAT(outputs, ElementsAre("out/a.wav a.wav", "out/x/y.flac x/y.flac", "out/s/c.wav s/c.wav",
                                     "out/d.wav d.wav"));
}

TEST(BatchPlan, GivesPathsThatNoOptionParserTakesForOptions) {
    const auto items = planBatch({entry("-q.wav")}, into("-o"));
    EXPECT_EQ(items.at(0).input, "./-q.wav");
    EXPECT_EQ(items.at(0).output, "./-o/-q.wav");
}

TEST(BatchPlan, RefusesTwoInputsWithTheSameOutput) {
    EXPECT_THAT(refusal({entry("a/x.wav"), entry("b/x.wav")}, into("out")),
                AllOf(HasSubstr("\"a/x.wav\" and \"b/x.wav\""), HasSubstr("out/x.wav")));
    BatchSettings settings = into("out");
    settings.extension = "flac";
    EXPECT_NE(refusal({entry("x.wav"), entry("x.mp3")}, settings), "");
    EXPECT_EQ(refusal({entry("x.wav"), entry("x.mp3")}, into("out")), "");
    EXPECT_NE(refusal({entry("x.wav", "y.wav"), entry("z.wav", "a/../y.wav")}, into("out")), "");
}

TEST(BatchPlan, RefusesAnOutputThatIsAnInputEvenThroughALink) {
    const test::TemporaryFolder folder;
    test::writeFile(folder.file("x.wav"), "x");
    std::filesystem::create_directory_symlink(folder.path(), folder.file("link"));
    EXPECT_THAT(refusal({entry(folder.file("x.wav"))}, into(folder.path())), HasSubstr("one of the inputs"));
    EXPECT_THAT(refusal({entry(folder.file("x.wav"))}, into(folder.file("link"))),
                HasSubstr("one of the inputs"));
    EXPECT_THAT(refusal({entry(folder.file("y.wav"), "x.wav"), entry(folder.file("x.wav"), "z.wav")},
                        into(folder.path())),
                HasSubstr("one of the inputs"));
}

TEST(BatchPlan, SharesTheListAmongShardsWithoutLossOrOverlap) {
    std::vector<ListEntry> entries;
    for (char c = 'a'; c <= 'g'; ++c) entries.push_back(entry(std::string(1, c) + ".wav"));
    BatchSettings settings = into("out");
    std::vector<std::string> shares;
    for (int number = 1; number <= 3; ++number) {
        settings.shard = {.number = number, .count = 3};
        std::string share;
        for (const BatchItem& item : planBatch(entries, settings)) share += item.name.front();
        shares.push_back(share);
    }
    EXPECT_THAT(shares, ElementsAre("adg", "be", "cf"));
    settings.shard = {.number = 9, .count = 9};
    EXPECT_TRUE(planBatch(entries, settings).empty());
}

TEST(BatchPlan, FindsTheFaultsOfTheWholeListInEveryShard) {
    BatchSettings settings = into("out");
    settings.shard = {.number = 1, .count = 3};
    EXPECT_NE(refusal({entry("z.wav"), entry("a/x.wav"), entry("b/x.wav")}, settings), "");
}

}  // namespace
