#include "batch_journal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <optional>

#include "failure.h"
#include "support/processes/temporary_folder.h"

namespace {

using sonivex_tool::BatchJournal;
using sonivex_tool::ExitCode;
using sonivex_tool::Failure;
using sonivex_tool::FinishedFile;
using sonivex_tool::Shard;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const std::vector<std::string> kBasis = {"version 1", "--effect=surround"};

FinishedFile someFile() {
    return {.name = "a/x.flac",
            .input = "/music/x.wav",
            .input_stamp = {.size_bytes = 1000, .mtime_ns = 1'700'000'000'123'456'789},
            .output_stamp = {.size_bytes = 500, .mtime_ns = 1'700'000'001'000'000'001},
            .exit_code = 0};
}

int error_of_flock = 0;  // of every call; 0: none

class Journal : public testing::Test {
  protected:
    ~Journal() override { error_of_flock = 0; }

    std::unique_ptr<BatchJournal> open(const Shard& shard = {}, std::vector<std::string> basis = kBasis) {
        return std::make_unique<BatchJournal>(folder_.path(), shard, std::move(basis));
    }
    std::string stateFile(const Shard& shard = {}) const {
        return folder_.file(sonivex_tool::journalName(shard));
    }
    test::TemporaryFolder folder_;
};

TEST_F(Journal, RemembersFinishedOutputsAcrossRuns) {
    {
        const auto journal = open();
        EXPECT_EQ(journal->exitCodeOf(someFile()), std::nullopt);
        EXPECT_FALSE(journal->knows("a/x.flac"));
        journal->addBegun("a/x.flac");
        EXPECT_EQ(journal->exitCodeOf(someFile()), std::nullopt);
        journal->addFinished(someFile());
        EXPECT_EQ(journal->exitCodeOf(someFile()), 0);
    }
    const auto journal = open();
    EXPECT_EQ(journal->exitCodeOf(someFile()), 0);
    EXPECT_TRUE(journal->knows("a/x.flac"));
    EXPECT_FALSE(journal->knows("x.flac"));
    EXPECT_THAT(journal->notes(), IsEmpty());
}

TEST_F(Journal, KnowsAFinishedOutputAtOnce) {
    const auto journal = open();
    journal->addFinished(someFile());
    EXPECT_TRUE(journal->knows("a/x.flac"));
}

TEST_F(Journal, RemembersThatAnOutputOfADamagedInputIsFinished) {
    FinishedFile file = someFile();
    file.exit_code = 13;
    open()->addFinished(file);
    EXPECT_EQ(open()->exitCodeOf(someFile()), 13);
}

TEST_F(Journal, ForgetsAnOutputWhenAnythingItDependsOnHasChanged) {
    open()->addFinished(someFile());
    const auto journal = open();
    FinishedFile file = someFile();
    file.input_stamp.mtime_ns += 1;
    EXPECT_EQ(journal->exitCodeOf(file), std::nullopt);
    file = someFile();
    file.input_stamp.size_bytes += 1;
    EXPECT_EQ(journal->exitCodeOf(file), std::nullopt);
    file = someFile();
    file.output_stamp.mtime_ns += 1;
    EXPECT_EQ(journal->exitCodeOf(file), std::nullopt);
    file = someFile();
    file.output_stamp.size_bytes += 1;
    EXPECT_EQ(journal->exitCodeOf(file), std::nullopt);
    file = someFile();
    file.input = "/music/y.wav";
    EXPECT_EQ(journal->exitCodeOf(file), std::nullopt);
    file = someFile();
    file.name = "x.flac";
    EXPECT_EQ(journal->exitCodeOf(file), std::nullopt);
}

TEST_F(Journal, ForgetsAllOutputsWhenTheOptionsHaveChanged) {
    open()->addFinished(someFile());
    EXPECT_EQ(open({}, {"version 1", "--effect=normalizer"})->exitCodeOf(someFile()), std::nullopt);
    EXPECT_EQ(open({}, {"version 1"})->exitCodeOf(someFile()), std::nullopt);
    EXPECT_EQ(open()->exitCodeOf(someFile()), 0);
}

TEST_F(Journal, SurvivesALineThatWasCutOff) {
    open()->addFinished(someFile());
    FinishedFile other = someFile();
    other.name = "second.flac";
    open()->addFinished(other);
    std::string contents = test::readFile(stateFile());
    contents.resize(contents.size() - 20);
    test::writeFile(stateFile(), contents);
    {
        const auto journal = open();
        EXPECT_EQ(journal->exitCodeOf(someFile()), 0);
        EXPECT_EQ(journal->exitCodeOf(other), std::nullopt);
        EXPECT_THAT(journal->notes(), SizeIs(1));
        journal->addFinished(other);
    }
    EXPECT_EQ(open()->exitCodeOf(other), 0);
}

TEST_F(Journal, IgnoresWhatIsNotAStateFileWithANote) {
    for (const std::string& contents :
         {std::string("hello\n"), std::string("[1,2]\n{\"output\":3}\nnull\n\"x\"\n"),
          std::string(3000, '\0'), std::string(3 << 20, '{'), std::string("{\"output\":\"\xff\"}\n")}) {
        test::writeFile(stateFile(), contents);
        const auto journal = open();
        EXPECT_EQ(journal->exitCodeOf(someFile()), std::nullopt);
        if (contents.front() != '\0') {
            EXPECT_THAT(journal->notes(), SizeIs(1));
        }
        journal->addFinished(someFile());
        EXPECT_EQ(journal->exitCodeOf(someFile()), 0);
    }
}

TEST_F(Journal, KeepsNamesThatAreNotUtf8) {
    FinishedFile file = someFile();
    file.name = "caf\xe9.wav";
    open()->addFinished(file);
    EXPECT_EQ(open()->exitCodeOf(file), 0);
    EXPECT_TRUE(open()->knows(file.name));
}

TEST_F(Journal, ReadsTheStateOfAllShards) {
    open({.number = 2, .count = 3})->addFinished(someFile());
    EXPECT_EQ(open()->exitCodeOf(someFile()), 0);
    EXPECT_EQ(open({.number = 1, .count = 4})->exitCodeOf(someFile()), 0);
    EXPECT_TRUE(std::filesystem::exists(stateFile({.number = 2, .count = 3})));
}

TEST_F(Journal, RefusesASecondBatchOnTheSameFolder) {
    const auto first = open();
    try {
        open();
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::OutputNotWritable);
        EXPECT_THAT(failure.what(), HasSubstr("another batch"));
    }
    EXPECT_THROW(open({.number = 1, .count = 2}), Failure);
}

TEST_F(Journal, LetsDifferentShardsWorkAtOnceButNotTheSame) {
    const auto first = open({.number = 1, .count = 2});
    const auto second = open({.number = 2, .count = 2});
    EXPECT_THROW(open({.number = 2, .count = 2}), Failure);
    EXPECT_THROW(open(), Failure);
}

// Some network file systems know no locks.
TEST_F(Journal, GoesOnWithANoteIfItCannotBeLocked) {
    error_of_flock = ENOLCK;
    const auto journal = open();
    error_of_flock = 0;
    EXPECT_THAT(journal->notes(), testing::ElementsAre(testing::StartsWith("cannot lock the state file \"" +
                                                                           stateFile() + "\": ")));
    journal->addFinished(someFile());
    EXPECT_TRUE(open()->exitCodeOf(someFile()));
}

TEST_F(Journal, ReportsAFolderThatCannotHoldIt) {
    std::filesystem::create_directory(stateFile());
    try {
        open();
        ADD_FAILURE();
    } catch (const Failure& failure) {
        EXPECT_EQ(failure.exitCode(), ExitCode::OutputNotWritable);
        EXPECT_THAT(failure.what(), HasSubstr("state file"));
    }
}

}  // namespace

extern "C" int __wrap_flock(int file, int operation);
extern "C" int __real_flock(int file, int operation);
extern "C" int __wrap_flock(int file, int operation) {
    if (error_of_flock == 0) return __real_flock(file, operation);
    errno = error_of_flock;
    return -1;
}
