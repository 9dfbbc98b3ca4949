// Checks that the filter logs every failure of a dump and continues playback.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/fsuid.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>

#include "dump_directory.h"
#include "filter/faults/filter_under_test.h"
#include "filter/faults/system_faults.h"
#include "support/effects/normalizer_effect.h"
#include "support/frames/frame_matchers.h"
#include "support/logs/host_log_capture.h"
#include "support/processes/process.h"

namespace test {
namespace {

class FilterDumpFailure : public ::testing::Test {
  protected:
    FilterDumpFailure() {
        filter_.options(R"({"enable_normalizer": true, "enable_dump": true})");
        filter_->setInvalid(false);
    }

    // Expects that playback continues: the next frame holds the effect's samples. It dumps 4096 bytes each of
    // input and output.
    void expectToPlay() {
        auto frame = makeFrame({}, noiseSource(played_++, 2000));
        const auto expected = engine_.process(samplesOf(*frame));
        const auto out = filter_.pass(std::move(frame));
        ASSERT_NE(out, nullptr);
        EXPECT_TRUE(holdsSamples(avFrameOf(out), expected));
    }
    std::string nameOf(const char* stage) {
        return dumpFileName("normalizer", stage, filter_.field(Peer::kSessionId));
    }

    HostLogCapture log_;
    FilterUnderTest filter_;

  private:
    NormalizerEffect engine_{2};
    uint32_t played_ = 0;
};

TEST_F(FilterDumpFailure, LogsAMissingDirectoryAtEveryCallUntilItExists) {
    const DumpDirectory parent;
    const std::string directory = parent.file("later");
    Vorlin::globalSettings::GetInstance().setProperty(kDumpDirectoryProperty, directory);
    for (int i = 0; i < 3; ++i) expectToPlay();
    for (const char* stage : {"input", "output"}) {
        EXPECT_EQ(log_.count("16 sonivex: failed to open dump file " + directory + "/" + nameOf(stage) +
                             ", errno=2 (No such file or directory)"),
                  3);
    }
    ASSERT_TRUE(std::filesystem::create_directory(directory));
    expectToPlay();
    EXPECT_EQ(log_.countContaining("failed to open"), 6);
    EXPECT_EQ(std::filesystem::file_size(directory + "/" + nameOf("input")), 4096u);
    EXPECT_EQ(std::filesystem::file_size(directory + "/" + nameOf("output")), 4096u);
}

TEST_F(FilterDumpFailure, LogsADirectoryThatIsAFile) {
    const DumpDirectory parent;
    writeFile(parent.file("file"), "");
    Vorlin::globalSettings::GetInstance().setProperty(kDumpDirectoryProperty, parent.file("file"));
    expectToPlay();
    EXPECT_EQ(log_.countContaining("errno=20 (Not a directory)"), 2);
}

// Makes a folder that the calling thread may enter but not write to, even as root.
class WriteProtected {
  public:
    explicit WriteProtected(const std::string& folder) : folder_(folder) {
        EXPECT_EQ(chmod(folder.c_str(), 0555), 0);
        if (geteuid() != 0) return;
        setfsuid(kNobody);
        EXPECT_EQ(currentUser(), kNobody);
    }
    WriteProtected(const WriteProtected&) = delete;
    WriteProtected& operator=(const WriteProtected&) = delete;
    ~WriteProtected() {
        setfsuid(geteuid());
        EXPECT_EQ(chmod(folder_.c_str(), 0755), 0);
    }

  private:
    static constexpr uid_t kNobody = 65534;
    // setfsuid with an impossible user changes nothing and returns the current one.
    static uid_t currentUser() { return static_cast<uid_t>(setfsuid(static_cast<uid_t>(-1))); }

    std::string folder_;
};

TEST_F(FilterDumpFailure, LogsAWriteProtectedDirectoryUntilItIsWritable) {
    const DumpDirectory directory;
    {
        const WriteProtected folder(directory.path());
        expectToPlay();
        for (const char* stage : {"input", "output"}) {
            EXPECT_EQ(log_.count("16 sonivex: failed to open dump file " + directory.file(nameOf(stage)) +
                                 ", errno=13 (Permission denied)"),
                      1);
        }
        EXPECT_EQ(directory.names(), std::vector<std::string>{});
    }
    expectToPlay();
    EXPECT_EQ(directory.names(), (std::vector<std::string>{nameOf("input"), nameOf("output")}));
}

TEST_F(FilterDumpFailure, RefusesAPlantedLinkAndKeepsItsTarget) {
    const DumpDirectory directory;
    WithSystemFaults faults;
    faults->random_numbers = {1, 1};
    const auto id = Peer::kGenerateSessionId();
    writeFile(directory.file("target"), "precious");
    std::filesystem::create_symlink(directory.file("target"),
                                    directory.file(dumpFileName("normalizer", "output", id)));
    std::filesystem::create_symlink(directory.file("nowhere"),
                                    directory.file(dumpFileName("normalizer", "input", id)));
    expectToPlay();
    EXPECT_EQ(filter_.field(Peer::kSessionId), id);
    EXPECT_EQ(log_.countContaining("errno=40 (Too many levels of symbolic links)"), 2);
    EXPECT_EQ(readFile(directory.file("target")), "precious");
    EXPECT_FALSE(std::filesystem::exists(directory.file("nowhere")));
}

TEST_F(FilterDumpFailure, DoesNotBlockOnAPlantedPipe) {
    const DumpDirectory directory;
    WithSystemFaults faults;
    faults->random_numbers = {1, 1};
    const auto id = Peer::kGenerateSessionId();
    ASSERT_EQ(mkfifo(directory.file(dumpFileName("normalizer", "output", id)).c_str(), 0644), 0);
    expectToPlay();
    EXPECT_EQ(log_.count("16 sonivex: failed to open dump file " + directory.file(nameOf("output")) +
                         ", errno=6 (No such device or address)"),
              1);
}

// A write to a pipe would end the player's process as soon as the reader closes it.
TEST_F(FilterDumpFailure, WritesNothingToAPlantedPipeWithAReader) {
    const DumpDirectory directory;
    WithSystemFaults faults;
    faults->random_numbers = {1, 1};
    const auto id = Peer::kGenerateSessionId();
    const auto path = directory.file(dumpFileName("normalizer", "output", id));
    ASSERT_EQ(mkfifo(path.c_str(), 0644), 0);
    const int reader = open(path.c_str(), O_RDONLY | O_NONBLOCK);
    ASSERT_NE(reader, -1);
    const int descriptors_before = openDescriptors();
    for (int i = 0; i < 2; ++i) expectToPlay();
    EXPECT_EQ(filter_.field(Peer::kSessionId), id);
    EXPECT_EQ(log_.count("16 sonivex: failed to open dump file " + path + ", errno=22 (Invalid argument)"),
              2);
    EXPECT_EQ(openDescriptors(), descriptors_before + 1) << "only the input file may be open";
    char heard[1];
    EXPECT_EQ(read(reader, heard, sizeof(heard)), 0) << "the pipe must have no writer";
    EXPECT_EQ(close(reader), 0);
    expectToPlay();
}

TEST_F(FilterDumpFailure, RefusesAFileWithAnotherHardLinkAndKeepsIt) {
    const DumpDirectory directory;
    WithSystemFaults faults;
    faults->random_numbers = {1, 1};
    const auto id = Peer::kGenerateSessionId();
    const auto path = directory.file(dumpFileName("normalizer", "output", id));
    writeFile(directory.file("target"), "precious");
    std::filesystem::create_hard_link(directory.file("target"), path);
    expectToPlay();
    EXPECT_EQ(filter_.field(Peer::kSessionId), id);
    EXPECT_EQ(log_.count("16 sonivex: failed to open dump file " + path + ", errno=31 (Too many links)"), 1);
    EXPECT_EQ(readFile(directory.file("target")), "precious");
    ASSERT_TRUE(std::filesystem::remove(directory.file("target")));
    expectToPlay();
    EXPECT_EQ(std::filesystem::file_size(path), 4096u)
        << "the dump must start once the file has no other name";
}

// Imitates a disk that fills up: limits the size of files in bytes.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) {
        signal_before_ = std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        EXPECT_EQ(setrlimit(RLIMIT_FSIZE, &limit), 0);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, signal_before_);
    }

  private:
    rlimit before_{};
    void (*signal_before_)(int) = SIG_DFL;
};

TEST_F(FilterDumpFailure, CountsAFileUpToItsLimitAndThenLogsTheFailure) {
    const DumpDirectory directory;
    {
        const FileSizeLimit limit(3 * 4096 / 2);
        for (int i = 0; i < 3; ++i) expectToPlay();
    }
    for (const char* stage : {"input", "output"}) {
        SCOPED_TRACE(stage);
        const auto name = nameOf(stage);
        EXPECT_EQ(std::filesystem::file_size(directory.file(name)), 6144u);
        EXPECT_EQ(filter_.field(Peer::kDumpTotals)[name], 6144u);
        EXPECT_EQ(log_.count("16 sonivex: write failed for " + name + ", errno=0 (short write)"), 1);
        EXPECT_EQ(log_.count("32 sonivex: dumped 2048 bytes to " + directory.file(name) +
                             " (total: 6144 bytes, channels: 2, samples: 1024)"),
                  1);
        EXPECT_EQ(log_.count("16 sonivex: write failed for " + name + ", errno=27 (File too large)"), 1);
    }
    expectToPlay();
    filter_->flush();
    EXPECT_EQ(log_.countContaining("total size: 10240 bytes"), 2)
        << "the dump must continue once there is room again";
}

TEST_F(FilterDumpFailure, LogsAFullDiskAndDoesNotCountItsBlocks) {
    const DumpDirectory directory;
    expectToPlay();
    {
        WithSystemFaults faults;
        faults->write_error = ENOSPC;
        for (int i = 0; i < 2; ++i) expectToPlay();
        EXPECT_EQ(faults->syncs, 0) << "the filter must not sync a file after a failed write";
    }
    for (const char* stage : {"input", "output"}) {
        EXPECT_EQ(log_.count("16 sonivex: write failed for " + nameOf(stage) +
                             ", errno=28 (No space left on device)"),
                  2);
        EXPECT_EQ(filter_.field(Peer::kDumpTotals)[nameOf(stage)], 4096u);
    }
}

TEST_F(FilterDumpFailure, RepeatsAnInterruptedWrite) {
    const DumpDirectory directory;
    WithSystemFaults faults;
    faults->writes_to_interrupt = 5;
    faults->syncs_to_interrupt = 3;
    expectToPlay();
    EXPECT_EQ(faults->writes_to_interrupt, 0);
    EXPECT_EQ(faults->syncs_to_interrupt, 0);
    EXPECT_EQ(log_.countContaining("failed"), 0);
    EXPECT_EQ(std::filesystem::file_size(directory.file(nameOf("input"))), 4096u);
    EXPECT_EQ(std::filesystem::file_size(directory.file(nameOf("output"))), 4096u);
}

TEST_F(FilterDumpFailure, CountsABlockWhoseSyncFails) {
    const DumpDirectory directory;
    WithSystemFaults faults;
    faults->sync_error = EIO;
    for (int i = 0; i < 2; ++i) expectToPlay();
    EXPECT_EQ(faults->syncs, 4) << "the filter must sync after every block";
    for (const char* stage : {"input", "output"}) {
        EXPECT_EQ(
            log_.count("24 sonivex: fsync failed for " + nameOf(stage) + ", errno=5 (Input/output error)"),
            2);
        EXPECT_EQ(filter_.field(Peer::kDumpTotals)[nameOf(stage)], 8192u);
    }
    EXPECT_EQ(log_.countContaining("sonivex: dumped 4096 bytes"), 4);
}

TEST_F(FilterDumpFailure, SkipsTheDumpWhileThereIsNoRandomness) {
    const DumpDirectory directory;
    {
        WithSystemFaults faults;
        faults->has_no_randomness = true;
        for (int i = 0; i < 2; ++i) expectToPlay();
    }
    EXPECT_EQ(log_.count("16 sonivex: dump skipped: no randomness"), 4);
    EXPECT_EQ(filter_.field(Peer::kSessionId), "");
    EXPECT_EQ(directory.names(), std::vector<std::string>{});
    expectToPlay();
    EXPECT_EQ(directory.names().size(), 2u);
}

}  // namespace
}  // namespace test
