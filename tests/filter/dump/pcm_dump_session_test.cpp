// Checks dump sessions: when they begin and end, and the names and folders of their files.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "dump_directory.h"
#include "dumping_filter.h"
#include "filter/faults/system_faults.h"
#include "support/effects/normalizer_effect.h"
#include "support/logs/host_log_capture.h"
#include "support/processes/process.h"
#include "support/signals/signal_matchers.h"

namespace test {
namespace {

TEST(FilterDumpSession, EndsAtASeekAndALaterFrameStartsAnother) {
    const DumpDirectory directory;
    const int descriptors_before = openDescriptors();
    FilterUnderTest filter;
    startDumping(filter, R"("enable_normalizer": true)");
    std::set<std::string> ids;
    for (uint32_t session = 0; session < 2; ++session) {
        NormalizerEffect engine(2);
        Pcm in;
        Pcm out;
        for (uint32_t call = 0; call < 3; ++call) {
            auto frame = makeFrame({}, noiseSource(10 * session + call, 3000));
            append(in, samplesOf(*frame));
            append(out, engine.process(samplesOf(*frame)));
            ASSERT_NE(filter.pass(std::move(frame)), nullptr);
        }
        EXPECT_EQ(openDescriptors(), descriptors_before + 2);
        const auto id = sessionOf(filter);
        ids.insert(id);
        filter->flush();
        EXPECT_EQ(openDescriptors(), descriptors_before);
        EXPECT_TRUE(sameSignal(samplesInFile(directory.file(dumpFileName("normalizer", "input", id))), in));
        EXPECT_TRUE(sameSignal(samplesInFile(directory.file(dumpFileName("normalizer", "output", id))), out));
        EXPECT_EQ(sessionOf(filter), "");
        EXPECT_TRUE(filter.field(Peer::kDumpFds).empty());
        EXPECT_TRUE(filter.field(Peer::kDumpTotals).empty());
        EXPECT_TRUE(filter.field(Peer::kDumpPaths).empty());
    }
    EXPECT_EQ(ids.size(), 2u);
    EXPECT_EQ(directory.names().size(), 4u);
}

TEST(FilterDumpSession, IsClosedWhenTheFilterIsDestroyed) {
    for (const Mode mode : {Mode::kInactive, Mode::kActive}) {
        const DumpDirectory directory;
        const int descriptors_before = openDescriptors();
        HostLogCapture log;
        {
            FilterUnderTest filter(mode);
            startDumping(filter, R"("enable_normalizer": true)");
            std::unique_ptr<Vorlin::IQFFrame> frame = makeFrame({}, noiseSource(1));
            ASSERT_EQ(filter->push(frame, 0), 0);
            constexpr int kSlowDisk_ms = 20'000;
            ASSERT_NE(filter.pullPatiently(kSlowDisk_ms), nullptr);
        }
        EXPECT_EQ(openDescriptors(), descriptors_before);
        ASSERT_EQ(directory.names().size(), 2u);
        for (const std::string& name : directory.names()) {
            EXPECT_EQ(log.count("32 sonivex: closed dump file " + name + ", total size: 4096 bytes"), 1);
        }
    }
}

TEST(FilterDumpSession, IsLoggedFromOpeningToClosing) {
    const DumpDirectory directory;
    FilterUnderTest filter;
    startDumping(filter, R"("enable_surround": true)");
    ASSERT_NE(filter.pass(makeFrame({}, noiseSource(1))), nullptr);
    filter->flush();

    HostLogCapture log;
    ASSERT_NE(filter.pass(makeFrame({.channels = 6, .frames = 480}, noiseSource(1))), nullptr);
    ASSERT_NE(filter.pass(makeFrame({.channels = 6, .frames = 480}, noiseSource(1))), nullptr);
    const auto id = sessionOf(filter);
    filter->flush();
    const auto in = dumpFileName("surround", "input", id);
    const auto out = dumpFileName("surround", "output", id);
    const auto is_of_dump = [](const std::string& line) {
        return line.find("sonivex: ") != std::string::npos;
    };
    std::vector<std::string> lines;
    for (const auto& line : log.lines()) {
        if (is_of_dump(line)) lines.push_back(line);
    }
    EXPECT_EQ(lines, (std::vector<std::string>{
                         "32 sonivex: using session ID: " + id,
                         "32 sonivex: dump file opened - path: " + directory.file(in) +
                             ", effect: surround, stage: input, channels: 6, samples: 480",
                         "32 sonivex: dumped 5760 bytes to " + directory.file(in) +
                             " (total: 5760 bytes, channels: 6, samples: 480)",
                         "32 sonivex: dump file opened - path: " + directory.file(out) +
                             ", effect: surround, stage: output, channels: 2, samples: 480",
                         "32 sonivex: dumped 1920 bytes to " + directory.file(out) +
                             " (total: 1920 bytes, channels: 2, samples: 480)",
                         "32 sonivex: dumped 5760 bytes to " + directory.file(in) +
                             " (total: 11520 bytes, channels: 6, samples: 480)",
                         "32 sonivex: dumped 1920 bytes to " + directory.file(out) +
                             " (total: 3840 bytes, channels: 2, samples: 480)",
                         "32 sonivex: closed dump file " + in + ", total size: 11520 bytes",
                         "32 sonivex: closed dump file " + out + ", total size: 3840 bytes",
                     }));
}

TEST(FilterDumpSession, CountsBytesBeyond32Bits) {
    const DumpDirectory directory;
    HostLogCapture log;
    FilterUnderTest filter;
    startDumping(filter, R"("enable_normalizer": true)");
    ASSERT_NE(filter.pass(makeFrame({.frames = 100}, noiseSource(1))), nullptr);
    const auto name = dumpFileName("normalizer", "input", sessionOf(filter));
    filter.field(Peer::kDumpTotals)[name] = 5'000'000'000;  // as after hours of playback
    ASSERT_NE(filter.pass(makeFrame({.frames = 100}, noiseSource(1))), nullptr);
    EXPECT_EQ(log.count("32 sonivex: dumped 400 bytes to " + directory.file(name) +
                        " (total: 5000000400 bytes, channels: 2, samples: 100)"),
              1);
    filter->flush();
    EXPECT_EQ(log.count("32 sonivex: closed dump file " + name + ", total size: 5000000400 bytes"), 1);
}

// --- Session ids.

TEST(FilterDumpSession, HasAnIdOfEightDigitsFromTheWholeRange) {
    std::set<std::string> ids;
    std::set<char> first_digits;
    for (int i = 0; i < 400; ++i) {
        const std::string id = Peer::kGenerateSessionId();
        ASSERT_EQ(id.size(), 8u) << id;
        for (const char digit : id) ASSERT_TRUE(std::isdigit(static_cast<unsigned char>(digit))) << id;
        ids.insert(id);
        first_digits.insert(id[0]);
    }
    EXPECT_EQ(first_digits, (std::set<char>{'1', '2', '3', '4', '5', '6', '7', '8', '9'}));
    EXPECT_GT(ids.size(), 390u) << "duplicates must be rare";
}

TEST(FilterDumpSession, TakesAnotherIdIfTheFileExists) {
    WithSystemFaults faults;
    faults->random_numbers = {1, 2};
    const std::string taken = Peer::kGenerateSessionId();
    const std::string free = Peer::kGenerateSessionId();
    ASSERT_NE(taken, free);
    const DumpDirectory directory;
    const auto existing = directory.file(dumpFileName("normalizer", "input", taken));
    writeFile(existing, "somebody's");
    HostLogCapture log;
    FilterUnderTest filter;
    startDumping(filter, R"("enable_normalizer": true)");
    faults->random_numbers = {1, 1, 1, 2};
    ASSERT_NE(filter.pass(makeFrame({}, noiseSource(1))), nullptr);
    EXPECT_EQ(sessionOf(filter), free);
    EXPECT_EQ(readFile(existing), "somebody's");
    EXPECT_EQ(log.count("32 sonivex: dump file " + existing + " already exists, regenerating session ID"), 3);
    EXPECT_EQ(log.count("32 sonivex: using session ID: " + free), 1);
}

TEST(FilterDumpSession, KeepsTheEleventhIdEvenIfItsFileExists) {
    WithSystemFaults faults;
    faults->random_numbers = {1, 2};
    const std::string taken = Peer::kGenerateSessionId();
    const std::string never_reached = Peer::kGenerateSessionId();
    const DumpDirectory directory;
    const auto existing = directory.file(dumpFileName("normalizer", "input", taken));
    writeFile(existing, std::string(10'000, 'x'));
    HostLogCapture log;
    FilterUnderTest filter;
    startDumping(filter, R"("enable_normalizer": true)");
    faults->random_numbers = std::deque<uint32_t>(11, 1);
    faults->random_numbers.push_back(2);
    auto frame = makeFrame({}, noiseSource(1));
    const auto in = samplesOf(*frame);
    ASSERT_NE(filter.pass(std::move(frame)), nullptr);
    EXPECT_EQ(sessionOf(filter), taken);
    EXPECT_EQ(log.count("32 sonivex: dump file " + existing + " already exists, regenerating session ID"),
              10);
    EXPECT_TRUE(sameSignal(samplesInFile(existing), in)) << "the file must hold nothing of its old contents";
}

// --- Dump directory.

// Sets the environment variable HOME, or unsets it for null, and restores it at the end.
class HomeOf {
  public:
    explicit HomeOf(const char* home) {
        if (const char* before = std::getenv("HOME")) before_ = before;
        if (home != nullptr) {
            setenv("HOME", home, 1);
        } else {
            unsetenv("HOME");
        }
    }
    HomeOf(const HomeOf&) = delete;
    HomeOf& operator=(const HomeOf&) = delete;
    ~HomeOf() { before_.empty() ? unsetenv("HOME") : setenv("HOME", before_.c_str(), 1); }

  private:
    std::string before_;
};

TEST(FilterDumpDirectory, IsThePlayersPropertyOrElseDocumentsOrElseTmp) {
    {
        const HomeOf home("/somewhere");
        EXPECT_EQ(Peer::kGetDumpDirectory(), "/somewhere/Documents");
        const DumpDirectory directory;
        EXPECT_EQ(Peer::kGetDumpDirectory(), directory.path());
    }
    const HomeOf none(nullptr);
    EXPECT_EQ(Peer::kGetDumpDirectory(), "/tmp");
    const HomeOf empty("");
    EXPECT_EQ(Peer::kGetDumpDirectory(), "/Documents");
}

TEST(FilterDumpDirectory, IsDocumentsWithoutThePlayersProperty) {
    const TemporaryFolder home;
    ASSERT_TRUE(std::filesystem::create_directory(home.file("Documents")));
    const HomeOf at_home(home.path().c_str());
    FilterUnderTest filter;
    startDumping(filter, R"("enable_normalizer": true)");
    ASSERT_NE(filter.pass(makeFrame({}, noiseSource(1))), nullptr);
    EXPECT_TRUE(std::filesystem::exists(
        home.file("Documents/" + dumpFileName("normalizer", "input", sessionOf(filter)))));
}

TEST(FilterDumpFile, IsWritableByItsOwnerOnlyAndNotInheritedByChildren) {
    const DumpDirectory directory;
    FilterUnderTest filter;
    startDumping(filter, R"("enable_normalizer": true)");
    const mode_t mask_before = umask(0);
    const auto out = filter.pass(makeFrame({}, noiseSource(1)));
    umask(mask_before);
    ASSERT_NE(out, nullptr);
    ASSERT_EQ(filter.field(Peer::kDumpFds).size(), 2u);
    for (const auto& [name, descriptor] : filter.field(Peer::kDumpFds)) {
        EXPECT_EQ(fcntl(descriptor, F_GETFD) & FD_CLOEXEC, FD_CLOEXEC) << name;
        EXPECT_EQ(fcntl(descriptor, F_GETFL) & O_ACCMODE, O_WRONLY) << name;
        struct stat status {};
        ASSERT_EQ(fstat(descriptor, &status), 0);
        EXPECT_EQ(status.st_mode & 07777u, 0644u) << name;
        EXPECT_EQ(filter.field(Peer::kDumpPaths)[name], directory.file(name));
    }
}

}  // namespace
}  // namespace test
