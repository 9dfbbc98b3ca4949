#include "batch_list.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "failure.h"
#include "support/processes/temporary_folder.h"

namespace {

using sonivex_tool::ExitCode;
using sonivex_tool::Failure;
using sonivex_tool::ListEntry;
using testing::ElementsAre;
using testing::HasSubstr;

std::vector<ListEntry> parse(const std::string& text) {
    std::istringstream lines(text);
    return sonivex_tool::parseList(lines, "files.txt");
}

std::vector<std::string> inputs(const std::vector<ListEntry>& entries) {
    std::vector<std::string> names;
    for (const ListEntry& entry : entries) names.push_back(entry.input);
    return names;
}

void expectRefusal(const std::string& text, const std::string& part) {
    try {
        parse(text);
        ADD_FAILURE() << "accepted: " << text;
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::Usage);
        EXPECT_THAT(failure.what(), HasSubstr(part));
        EXPECT_THAT(failure.what(), HasSubstr("files.txt"));
    }
}

TEST(BatchList, ReadsOneInputPerLineAndLeavesOutEmptyLines) {
    EXPECT_THAT(inputs(parse("a.wav\n\nb c.wav\n# d.wav")), ElementsAre("a.wav", "b c.wav", "# d.wav"));
    EXPECT_TRUE(parse("").empty());
}

TEST(BatchList, KeepsSpacesWhichMayBelongToAName) {
    EXPECT_THAT(inputs(parse(" a.wav \n")), ElementsAre(" a.wav "));
}

TEST(BatchList, ReadsListsMadeOnWindows) {
    EXPECT_THAT(inputs(parse("\xEF\xBB\xBF"
                             "a.wav\r\n\r\nb.wav\r\n")),
                ElementsAre("a.wav", "b.wav"));
}

TEST(BatchList, TakesTheOutputsNameAfterATab) {
    const auto entries = parse("in/a.wav\tdisc 1/first.flac\nb.wav\n");
    EXPECT_EQ(entries.at(0).input, "in/a.wav");
    EXPECT_EQ(entries.at(0).output, "disc 1/first.flac");
    EXPECT_EQ(entries.at(1).output, "");
}

TEST(BatchList, RefusesLinesThatNameNoFileOrLeaveTheOutputFolder) {
    expectRefusal("ok.wav\n\tb.wav\n", "line 2 of \"files.txt\" has no input");
    expectRefusal("a\tb\tc\n", "more than one tab");
    expectRefusal("a\t\n", "no output file");
    expectRefusal("a\tfolder/\n", "no output file");
    expectRefusal("a\t/b.wav\n", "outside the output folder");
    expectRefusal("a\tx/../../b.wav\n", "outside the output folder");
    expectRefusal(std::string("a\0b\n", 4), "null byte");
    expectRefusal(std::string(20000, 'x'), "too long");
}

class BatchFolder : public testing::Test {
  protected:
    void add(const std::string& name) {
        const std::filesystem::path path = folder_.file(name);
        std::filesystem::create_directories(path.parent_path());
        test::writeFile(path.string(), "x");
    }
    std::vector<std::string> listed(const std::string& output_folder) {
        std::vector<std::string> names;
        for (const ListEntry& entry : sonivex_tool::listFolder(folder_.path(), output_folder))
            names.push_back(entry.folder + " " + entry.input.substr(folder_.path().size() + 1));
        return names;
    }
    test::TemporaryFolder folder_;
};

TEST_F(BatchFolder, ListsMediaFilesWithTheirSubFoldersInOrder) {
    for (const char* name : {"b.wav", "a.mp3", "notes.txt", "cd 1/x/c.flac"}) add(name);
    EXPECT_THAT(listed("/nowhere"), ElementsAre(". a.mp3", ". b.wav", "cd 1/x cd 1/x/c.flac"));
}

TEST_F(BatchFolder, LeavesOutHiddenFilesAndTheOutputFolder) {
    for (const char* name : {".hidden.wav", ".trash/a.wav", "out/a.wav", "out/deep/b.wav", "outer/c.wav"})
        add(name);
    EXPECT_THAT(listed(folder_.file("out")), ElementsAre("outer outer/c.wav"));
}

TEST_F(BatchFolder, IsRefusedAsItsOwnOutputFolderAndWhenItHasNoMedia) {
    add("notes.txt");
    EXPECT_THROW(sonivex_tool::readList(folder_.path(), folder_.path() + "/."), Failure);
    try {
        sonivex_tool::readList(folder_.path(), folder_.file("out"));
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::InputNotReadable);
        EXPECT_THAT(failure.what(), HasSubstr("no media files"));
    }
}

TEST_F(BatchFolder, ReportsAListThatCannotBeRead) {
    test::writeFile(folder_.file("empty.txt"), "\n\n");
    for (const char* name : {"none.txt", "empty.txt"}) {
        try {
            sonivex_tool::readList(folder_.file(name), folder_.file("out"));
            ADD_FAILURE() << name;
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.exitCode(), ExitCode::InputNotReadable);
            EXPECT_THAT(failure.what(), HasSubstr(name));
        }
    }
}

TEST(BatchList, NamesAtMostAMillionInputs) {
    constexpr size_t kMost = 1'000'000;
    std::string list;
    for (size_t line = 0; line < kMost; ++line) list += "a\n\n";
    EXPECT_EQ(parse(list).size(), kMost);
    expectRefusal(list + "b\n", "line 2000001 of \"files.txt\" is one too many");
}

TEST_F(BatchFolder, RefusesAListThatIsTooLongForMemory) {
    constexpr uintmax_t kLongest_bytes = uintmax_t{64} << 20;
    const std::string list = folder_.file("list.txt");
    test::writeFile(list, "");
    const auto refusal = [&](uintmax_t bytes) -> std::string {
        std::filesystem::resize_file(list, bytes);  // null bytes, which take no room on the disk
        try {
            sonivex_tool::readList(list, folder_.file("out"));
        } catch (const Failure& failure) {
            EXPECT_EQ(failure.exitCode(), ExitCode::Usage);
            return failure.what();
        }
        return "none";
    };
    EXPECT_THAT(refusal(kLongest_bytes), HasSubstr("line 1"));
    EXPECT_THAT(refusal(kLongest_bytes + 1), HasSubstr("list.txt\" is longer than 64 MiB"));
}

}  // namespace
