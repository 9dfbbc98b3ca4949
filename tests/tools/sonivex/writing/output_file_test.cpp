#include "output_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/types.h>

#include <cerrno>
#include <deque>
#include <filesystem>
#include <new>
#include <string>
#include <utility>

#include "failure.h"
#include "support/processes/temporary_folder.h"

namespace {

std::deque<int> errors_of_fsync;  // of the next calls; the calls after them succeed
int fsyncs = 0;
int empty_writes = 0;                        // how many of the next writes take nothing
int error_of_close = 0;                      // of the next call; 0: none
int error_of_link = 0;                       // of every call; 0: none
bool has_renaming_without_replacing = true;  // false on some file systems
bool lacks_memory_for_context = false;

}  // namespace

extern "C" int __wrap_fsync(int file);
extern "C" int __real_fsync(int file);
extern "C" int __wrap_fsync(int file) {
    ++fsyncs;
    if (errors_of_fsync.empty()) return __real_fsync(file);
    errno = errors_of_fsync.front();
    errors_of_fsync.pop_front();
    return -1;
}

extern "C" ssize_t __wrap_write(int file, const void* data, size_t bytes);
extern "C" ssize_t __real_write(int file, const void* data, size_t bytes);
extern "C" ssize_t __wrap_write(int file, const void* data, size_t bytes) {
    if (empty_writes == 0) return __real_write(file, data, bytes);
    --empty_writes;
    return 0;
}

// The descriptor is gone even if the call fails, as on Linux.
extern "C" int __wrap_close(int file);
extern "C" int __real_close(int file);
extern "C" int __wrap_close(int file) {
    const int result = __real_close(file);
    if (error_of_close == 0) return result;
    errno = std::exchange(error_of_close, 0);
    return -1;
}

extern "C" int __wrap_renameat2(int from_folder, const char* from, int to_folder, const char* to,
                                unsigned flags);
extern "C" int __real_renameat2(int from_folder, const char* from, int to_folder, const char* to,
                                unsigned flags);
extern "C" int __wrap_renameat2(int from_folder, const char* from, int to_folder, const char* to,
                                unsigned flags) {
    if (has_renaming_without_replacing) return __real_renameat2(from_folder, from, to_folder, to, flags);
    errno = EINVAL;
    return -1;
}

extern "C" int __wrap_link(const char* from, const char* to);
extern "C" int __real_link(const char* from, const char* to);
extern "C" int __wrap_link(const char* from, const char* to) {
    if (error_of_link == 0) return __real_link(from, to);
    errno = error_of_link;
    return -1;
}

using ReadBytes = int (*)(void*, uint8_t*, int);
using Seek = int64_t (*)(void*, int64_t, int);
extern "C" AVIOContext* __wrap_avio_alloc_context(unsigned char* buffer, int bytes, int is_written,
                                                  void* opaque, ReadBytes read, ReadBytes write, Seek seek);
extern "C" AVIOContext* __real_avio_alloc_context(unsigned char* buffer, int bytes, int is_written,
                                                  void* opaque, ReadBytes read, ReadBytes write, Seek seek);
extern "C" AVIOContext* __wrap_avio_alloc_context(unsigned char* buffer, int bytes, int is_written,
                                                  void* opaque, ReadBytes read, ReadBytes write, Seek seek) {
    if (lacks_memory_for_context) return nullptr;
    return __real_avio_alloc_context(buffer, bytes, is_written, opaque, read, write, seek);
}

namespace {

using sonivex_tool::ExitCode;
using sonivex_tool::Failure;
using sonivex_tool::OutputFile;
using testing::ElementsAre;
using testing::IsEmpty;

class OutputFileTest : public testing::Test {
  protected:
    void TearDown() override {
        error_of_link = 0;
        has_renaming_without_replacing = true;
        lacks_memory_for_context = false;
    }

    static void put(OutputFile& file, const std::string& text) {
        avio_write(file.io(), reinterpret_cast<const unsigned char*>(text.data()),
                   static_cast<int>(text.size()));
    }

    template <typename Action>
    static ExitCode failureOf(const Action& action) {
        try {
            action();
        } catch (const Failure& failure) {
            return failure.exitCode();
        }
        return ExitCode::Success;
    }

    test::TemporaryFolder folder_;
};

TEST_F(OutputFileTest, AppearsUnderItsNameOnlyOnCommit) {
    OutputFile file(folder_.file("a"), false);
    put(file, "whole");
    EXPECT_FALSE(std::filesystem::exists(folder_.file("a")));
    file.commit();
    EXPECT_EQ(test::readFile(folder_.file("a")), "whole");
    EXPECT_THAT(folder_.names(), ElementsAre("a"));
}

TEST_F(OutputFileTest, IsNotCommittedIfTheDiskFailsToKeepIt) {
    const std::pair<int, ExitCode> failures[] = {{EIO, ExitCode::OutputNotWritable},
                                                 {ENOSPC, ExitCode::NoSpace}};
    for (const auto& [error, exit_code] : failures) {
        {
            OutputFile file(folder_.file("a"), false);
            put(file, "whole");
            errors_of_fsync = {error};
            EXPECT_EQ(failureOf([&] { file.commit(); }), exit_code) << error;
        }
        EXPECT_THAT(folder_.names(), IsEmpty()) << error;
    }
}

TEST_F(OutputFileTest, IsNotCommittedIfTheDiskTurnsOutFullOnClose) {
    const std::pair<int, ExitCode> failures[] = {{EIO, ExitCode::OutputNotWritable},
                                                 {ENOSPC, ExitCode::NoSpace}};
    for (const auto& [error, exit_code] : failures) {
        {
            OutputFile file(folder_.file("a"), false);
            put(file, "whole");
            error_of_close = error;
            EXPECT_EQ(failureOf([&] { file.commit(); }), exit_code) << error;
            EXPECT_EQ(error_of_close, 0) << "nothing was closed";
        }
        EXPECT_THAT(folder_.names(), IsEmpty()) << error;
    }
}

TEST_F(OutputFileTest, IsCommittedAfterASignalAndOnAFileSystemWithoutFsync) {
    for (const std::deque<int>& errors : {std::deque<int>{EINTR, EINTR}, std::deque<int>{EINVAL}}) {
        OutputFile file(folder_.file("a"), true);
        put(file, "whole");
        errors_of_fsync = errors;
        fsyncs = 0;
        file.commit();
        EXPECT_EQ(fsyncs, errors.front() == EINTR ? 3 : 1) << "an interrupted call is repeated";
        EXPECT_EQ(test::readFile(folder_.file("a")), "whole");
    }
}

TEST_F(OutputFileTest, FailsInsteadOfWaitingForADiskThatTakesNothing) {
    {
        OutputFile file(folder_.file("a"), false);
        put(file, "whole");
        empty_writes = 1;
        EXPECT_EQ(failureOf([&] { file.commit(); }), ExitCode::OutputNotWritable);
        empty_writes = 0;
    }
    EXPECT_THAT(folder_.names(), IsEmpty());
}

TEST_F(OutputFileTest, LeavesNothingBehindWithoutACommit) {
    {
        OutputFile file(folder_.file("a"), false);
        put(file, "part");
        avio_flush(file.io());
        EXPECT_EQ(folder_.names().size(), 1U);
    }
    EXPECT_THAT(folder_.names(), IsEmpty());
}

TEST_F(OutputFileTest, NeverReplacesAFileThatAppearedMeanwhile) {
    OutputFile file(folder_.file("a"), false);
    put(file, "new");
    test::writeFile(folder_.file("a"), "came first");
    EXPECT_EQ(failureOf([&] { file.commit(); }), ExitCode::OutputExists);
    EXPECT_EQ(test::readFile(folder_.file("a")), "came first");
}

TEST_F(OutputFileTest, GetsItsNameOnAFileSystemThatCannotRenameWithoutReplacing) {
    has_renaming_without_replacing = false;
    for (const int error : {0, EPERM}) {
        const std::string name = "a" + std::to_string(error);
        error_of_link = error;
        OutputFile file(folder_.file(name), false);
        put(file, "whole");
        file.commit();
        EXPECT_EQ(test::readFile(folder_.file(name)), "whole");
        EXPECT_THAT(folder_.names(), ElementsAre(name)) << "the temporary name is gone";
        std::filesystem::remove(folder_.file(name));
    }
}

TEST_F(OutputFileTest, ReplacesNothingOnAFileSystemThatCannotRenameWithoutReplacing) {
    has_renaming_without_replacing = false;
    for (const int error : {0, EPERM}) {
        error_of_link = error;
        {
            OutputFile file(folder_.file("a"), false);
            put(file, "new");
            test::writeFile(folder_.file("a"), "came first");
            EXPECT_EQ(failureOf([&] { file.commit(); }), ExitCode::OutputExists) << error;
        }
        EXPECT_EQ(test::readFile(folder_.file("a")), "came first") << error;
        EXPECT_THAT(folder_.names(), ElementsAre("a")) << error;
        std::filesystem::remove(folder_.file("a"));
    }
}

TEST_F(OutputFileTest, ReplacesAFileOnRequestAndKeepsItsMode) {
    test::writeFile(folder_.file("a"), "old");
    ASSERT_EQ(chmod(folder_.file("a").c_str(), 0640), 0);
    OutputFile file(folder_.file("a"), true);
    put(file, "new");
    file.commit();
    EXPECT_EQ(test::readFile(folder_.file("a")), "new");
    struct stat status {};
    ASSERT_EQ(stat(folder_.file("a").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 07777U, 0640U);
}

TEST_F(OutputFileTest, WritesThroughASymbolicLinkAndKeepsIt) {
    std::filesystem::create_directory(folder_.file("d"));
    std::filesystem::create_symlink("d/target", folder_.file("link"));
    OutputFile file(folder_.file("link"), false);
    put(file, "new");
    file.commit();
    EXPECT_TRUE(std::filesystem::is_symlink(folder_.file("link")));
    EXPECT_EQ(test::readFile(folder_.file("d/target")), "new");
}

TEST_F(OutputFileTest, LeavesNothingBehindIfMemoryRunsOut) {
    lacks_memory_for_context = true;
    EXPECT_THROW(OutputFile(folder_.file("a"), false), std::bad_alloc);
    EXPECT_THAT(folder_.names(), IsEmpty());
}

TEST_F(OutputFileTest, TellsItsSizeBeforeAnythingIsWrittenAndAfter) {
    OutputFile file(folder_.file("a"), false);
    EXPECT_EQ(avio_size(file.io()), 0);
    put(file, "text");
    avio_flush(file.io());
    EXPECT_EQ(file.io()->seek(file.io()->opaque, 0, AVSEEK_SIZE), 4);
    EXPECT_NO_THROW(file.throwIfFailed());
}

TEST_F(OutputFileTest, RefusesExistingFilesFoldersAndDevices) {
    test::writeFile(folder_.file("a"), "old");
    const auto check = [&](const std::string& path, bool replace) {
        return failureOf([&] { OutputFile::check(path, replace); });
    };
    EXPECT_EQ(check(folder_.file("a"), false), ExitCode::OutputExists);
    EXPECT_EQ(check(folder_.file("a"), true), ExitCode::Success);
    EXPECT_EQ(check(folder_.path(), true), ExitCode::OutputExists);
    EXPECT_EQ(check("/dev/null", true), ExitCode::OutputExists);
    EXPECT_EQ(check(folder_.file("b"), false), ExitCode::Success);
}

TEST_F(OutputFileTest, ReportsAFailedSeek) {
    OutputFile file(folder_.file("a"), false);
    put(file, "text");
    avio_flush(file.io());
    EXPECT_EQ(avio_size(file.io()), 4);
    EXPECT_NO_THROW(file.throwIfFailed());
    EXPECT_LT(file.io()->seek(file.io()->opaque, -1, SEEK_SET), 0);
    EXPECT_EQ(failureOf([&] { file.throwIfFailed(); }), ExitCode::OutputNotWritable);
    EXPECT_EQ(failureOf([&] { file.commit(); }), ExitCode::OutputNotWritable);
}

TEST_F(OutputFileTest, ReportsAMissingFolder) {
    EXPECT_EQ(failureOf([&] { OutputFile file(folder_.file("no/a"), false); }), ExitCode::OutputNotWritable);
}

}  // namespace
