// Makes requests for memory of the program fail in turn, once and from then on. Whatever fails, the program
// ends with one clear line and the right exit code. An output is a whole file, or not there at all.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <set>

#include "end_to_end/media/media.h"
#include "failing_calls/sweep.h"
#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"

namespace {

namespace fs = std::filesystem;

constexpr std::chrono::seconds kLongestRun(60);
constexpr int kInternal = 1;
constexpr int kDamaged = 13;
constexpr int kBatchFailed = 14;
constexpr char kOutOfMemory[] = "sonivex: out of memory\n";
// The system says so if there is no memory for a thread's stack.
constexpr char kNoThread[] = "sonivex: cannot start a thread: Resource temporarily unavailable\n";

struct Command {
    std::vector<std::string> arguments;
    std::string output;              // in the folder; empty: none
    std::set<int> other_codes = {};  // besides success and a lack of memory
};

class FailingMemory : public testing::Test {
  protected:
    std::string work() const { return folder_.file("work"); }
    std::string input() const { return folder_.file("in.wav"); }

    struct Run {
        test::ProcessResult result;
        bool has_failed = false;
        long requests = 0;  // 0 if the program did not reach its end
    };

    Run run(const Command& command, const std::string& whose, const std::string& manner, long first) const {
        fs::remove_all(work());
        fs::create_directory(work());
        const std::string mark = folder_.file("mark");
        const std::string count = folder_.file("count");
        fs::remove(mark);
        fs::remove(count);
        std::vector<std::string> line = {"env",
                                         "LD_PRELOAD=" SONIVEX_FAILING_MEMORY,
                                         "SONIVEX_FAIL_FIRST=" + std::to_string(first),
                                         "SONIVEX_FAIL_MANNER=" + manner,
                                         "SONIVEX_FAIL_WHOSE=" + whose,
                                         "SONIVEX_FAIL_MARK=" + mark,
                                         "SONIVEX_FAIL_COUNT=" + count,
                                         SONIVEX_PROGRAM};
        line.insert(line.end(), command.arguments.begin(), command.arguments.end());
        test::ProcessOptions options;
        options.working_folder = work();
        Run run;
        run.result = test::Process(line, options).wait(kLongestRun);
        run.has_failed = fs::exists(mark);
        if (fs::exists(count)) run.requests = std::stol(test::readFile(count));
        return run;
    }

    void expectClearEnd(const Command& command, const Run& run) const {
        const auto& result = run.result;
        ASSERT_EQ(result.signal, 0) << "the program crashed or hung: " << result.err;
        const bool is_expected = result.exit_code == 0 || result.exit_code == kInternal ||
                                 command.other_codes.contains(result.exit_code);
        EXPECT_TRUE(is_expected) << result.exit_code << ": " << result.err;
        const bool names_lack = result.err == kOutOfMemory || result.err == kNoThread;
        EXPECT_TRUE(result.exit_code != kInternal || names_lack) << result.err;
        EXPECT_TRUE(result.exit_code == 0 || result.err.find("sonivex: ") != std::string::npos) << result.err;
        if (command.output.empty()) return;
        const bool is_complete = result.exit_code == 0 || result.exit_code == kDamaged;
        const bool is_there = fs::exists(command.output);
        EXPECT_TRUE(is_there || !is_complete) << result.err;
        EXPECT_TRUE(!is_there || !command.output.ends_with(".wav") || !test::decode(command.output).empty());
        for (const auto& entry : fs::recursive_directory_iterator(work()))
            EXPECT_FALSE(entry.path().filename().string().ends_with(".part")) << entry.path();
    }

    // Fails requests that are spread over the whole run, each of them alone, and then with all that follow.
    void failRequests(const Command& command, const std::string& whose, long usual_runs, long most_runs) {
        const Run unharmed = run(command, whose, "once", 0);
        ASSERT_EQ(unharmed.result.exit_code, 0) << unharmed.result.err;
        ASSERT_GT(unharmed.requests, 100);
        const long runs = std::min(test::failsEveryCall() ? most_runs : usual_runs, unharmed.requests);
        long failed = 0;
        for (const char* manner : {"once", "always"}) {
            for (long i = 0; i < runs && !HasFailure(); ++i) {
                const long first = 1 + i * (unharmed.requests - 1) / runs;
                SCOPED_TRACE(whose + " " + manner + " " + std::to_string(first) + " of " +
                             std::to_string(unharmed.requests));
                const Run harmed = run(command, whose, manner, first);
                if (harmed.has_failed) ++failed;
                expectClearEnd(command, harmed);
            }
        }
        EXPECT_GT(failed, runs);  // the requests of a run with threads differ a little
    }

    test::TemporaryFolder folder_;
};

TEST_F(FailingMemory, OfARenderLeavesAWholeFileOrNone) {
    test::makeQuietSpeech(input(), 2, {"-t", "0.1"});
    failRequests(
        {{"render", input(), work() + "/out.wav", "--quiet"}, work() + "/out.wav", {3, 4, 12, kDamaged}},
        "c++", 12, 600);
}

TEST_F(FailingMemory, OfAMeasurementIsReported) {
    test::makeQuietSpeech(input(), 2, {"-t", "0.1"});
    failRequests({{"inspect", input()}, "", {3, 4, kDamaged}}, "c++", 12, 600);
}

TEST_F(FailingMemory, OfTheListOfResponsesIsReported) {
    failRequests({{"responses", "--set", "cingo", "--json"}, ""}, "c++", 12, 600);
}

TEST_F(FailingMemory, OfAPresetLeavesItWholeOrAway) {
    failRequests(
        {{"render", "--effect", "surround", "--save-preset", work() + "/mine.conf"}, work() + "/mine.conf"},
        "c++", 12, 600);
}

TEST_F(FailingMemory, OfABatchLeavesWholeFilesOrNone) {
    test::makeQuietSpeech(folder_.file("a.wav"), 1, {"-t", "0.1"});
    test::writeFile(folder_.file("list"), folder_.file("a.wav") + "\n");
    failRequests(
        {{"render", "--batch", folder_.file("list"), "-o", work() + "/out", "--jobs", "1", "--quiet"},
         work() + "/out/a.wav",
         {kBatchFailed, kDamaged}},
        "c++", 6, 200);
}

TEST_F(FailingMemory, OfTheCLibrariesIsReportedByCommandsWithoutFiles) {
    failRequests({{"responses", "--set", "cingo", "--json"}, ""}, "all", 12, 600);
}

// Demuxers and decoders may take a lack of memory for damage. The loader and the filter have their own codes.
TEST_F(FailingMemory, OfTheCLibrariesLeavesAWholeFileOrNone) {
    test::makeQuietSpeech(folder_.file("in.flac"), 2, {"-t", "0.1"});
    failRequests({{"render", folder_.file("in.flac"), work() + "/out.wav", "--quiet"},
                  work() + "/out.wav",
                  {3, 4, 10, 12, kDamaged}},
                 "all", 24, 600);
}

TEST_F(FailingMemory, OfTheCLibrariesIsReportedByAMeasurement) {
    test::makeQuietSpeech(folder_.file("in.flac"), 2, {"-t", "0.1"});
    failRequests({{"inspect", folder_.file("in.flac")}, "", {3, 4, kDamaged}}, "all", 12, 600);
}

}  // namespace
