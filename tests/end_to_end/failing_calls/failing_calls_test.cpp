// Makes every system call fail in turn that the program makes for a file: opening, reading, writing, syncing,
// closing, renaming, and the start of threads. Whatever fails, the program ends with its exit code and one
// clear line, and under the name of an output stands the whole new file, the old one, or nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>

#include "end_to_end/media/media.h"
#include "failing_calls/sweep.h"
#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using std::chrono::seconds;

constexpr seconds kLongestRun(60);
constexpr int kMostCalls = 3000;

/** What fails: see failing_system.cpp. */
struct Fault {
    const char* call;
    const char* manner;
    std::string result;

    std::string name() const { return std::string(call) + " " + manner + " " + result; }
};

std::vector<Fault> everyFault() {
    const auto number = [](int error) { return std::to_string(error); };
    return {
        {"open", "once", number(EACCES)},    {"open", "always", number(EMFILE)},
        {"read", "once", number(EIO)},       {"read", "once", number(EINTR)},
        {"read", "always", number(EIO)},     {"read", "once", "short"},
        {"write", "once", number(EIO)},      {"write", "once", number(EINTR)},
        {"write", "always", number(ENOSPC)}, {"write", "once", "short"},
        {"sync", "once", number(EIO)},       {"sync", "once", number(EINTR)},
        {"close", "once", number(EIO)},      {"close", "always", number(ENOSPC)},
        {"rename", "once", number(EACCES)},  {"rename", "always", number(EIO)},
        {"thread", "once", number(EAGAIN)},  {"thread", "always", number(EAGAIN)},
    };
}

/** One command on files in the folder `work`, relative to it. */
struct Command {
    std::string name;
    std::vector<std::string> arguments;
    std::vector<std::string> inputs;   // copied into the folder first
    std::vector<std::string> outputs;  // of a run without a fault
    std::set<int> harmless_codes{0};   // with these the outputs are complete
    bool is_repeatable = false;        // once more without a fault, it completes what is missing
};

class FailingCalls : public testing::Test {
  protected:
    FailingCalls() { fs::create_directory(templates()); }

    std::string templates() const { return folder_.file("templates"); }
    std::string work() const { return folder_.file("work"); }
    std::string mark() const { return folder_.file("mark"); }

    // Runs a command in a fresh folder.
    test::ProcessResult run(const Command& command, const Fault& fault, int first) {
        fs::remove(mark());
        fs::remove_all(work());
        fs::create_directory(work());
        for (const std::string& input : command.inputs) {
            fs::copy(templates() + "/" + input, work() + "/" + input, fs::copy_options::recursive);
        }
        return runAgain(command, fault, first);
    }

    test::ProcessResult runAgain(const Command& command, const Fault& fault, int first) {
        std::vector<std::string> line = {"env",
                                         "LD_PRELOAD=" SONIVEX_FAILING_SYSTEM,
                                         std::string("SONIVEX_FAIL_CALL=") + fault.call,
                                         "SONIVEX_FAIL_FIRST=" + std::to_string(first),
                                         std::string("SONIVEX_FAIL_MANNER=") + fault.manner,
                                         "SONIVEX_FAIL_RESULT=" + fault.result,
                                         "SONIVEX_FAIL_FOLDER=" + work(),
                                         "SONIVEX_FAIL_MARK=" + mark(),
                                         SONIVEX_PROGRAM};
        line.insert(line.end(), command.arguments.begin(), command.arguments.end());
        test::ProcessOptions options;
        options.working_folder = work();
        test::Process process(line, options);
        return process.wait(kLongestRun);
    }

    bool hasFailed() const { return fs::exists(mark()); }

    // Returns all files below the working folder with their contents, by their names.
    std::map<std::string, std::string> files() const {
        std::map<std::string, std::string> all;
        for (const auto& entry : fs::recursive_directory_iterator(work())) {
            if (!entry.is_regular_file()) continue;
            all[entry.path().lexically_relative(work()).string()] = test::readFile(entry.path().string());
        }
        return all;
    }

    void expectNothingHalfWritten(const Command& command, const test::ProcessResult& result,
                                  const std::map<std::string, std::string>& before,
                                  const std::map<std::string, std::string>& whole) {
        ASSERT_EQ(result.signal, 0) << "the program crashed or hung";
        const bool is_harmless = command.harmless_codes.contains(result.exit_code);
        if (!is_harmless) {
            EXPECT_EQ(result.err.rfind("sonivex: ", 0), 0U) << result.err;
            EXPECT_GT(result.exit_code, 0);
        }
        std::istringstream lines(result.err);
        int count = 0;
        for (std::string line; std::getline(lines, line); ++count) {
            EXPECT_TRUE(is_harmless || line.rfind("sonivex: ", 0) == 0) << line;
        }
        EXPECT_LE(count, command.is_repeatable ? 3 : 1) << result.err;
        const auto after = files();
        for (const auto& [name, contents] : after) {
            if (isState(name)) continue;
            const bool is_old = before.contains(name) && before.at(name) == contents;
            const bool is_whole = whole.contains(name) && whole.at(name) == contents;
            // OUT is complete, but a part of IN was lost.
            const bool is_rest =
                result.exit_code == 13 && whole.contains(name) && !test::decode(work() + "/" + name).empty();
            EXPECT_TRUE(is_old || is_whole || is_rest)
                << name << " is neither old nor whole; " << result.exit_code << ": " << result.err;
        }
        for (const std::string& output : command.outputs) {
            EXPECT_TRUE(result.exit_code != 0 || after.contains(output)) << output << " is missing";
        }
    }

    // Whatever goes to an output must arrive there. An interrupted or short write is repeated. A batch may
    // lose the sync of its state, which only costs the rendering of some files.
    static bool mustBeReported(const Command& command, const Fault& fault) {
        if (fault.result == "short" || fault.result == std::to_string(EINTR)) return false;
        const std::string call = fault.call;
        return call == "write" || call == "rename" || (call == "sync" && !command.is_repeatable);
    }

    // The state of a batch grows line by line.
    static bool isState(const std::string& name) {
        return fs::path(name).filename().string().rfind(".sonivex-batch", 0) == 0;
    }

    void failEveryCall(const Command& command, int stride) {
        const Fault none{"none", "once", "0"};
        const auto unharmed = run(command, none, 1);
        ASSERT_TRUE(command.harmless_codes.contains(unharmed.exit_code)) << unharmed.err;
        const auto whole = files();
        for (const std::string& output : command.outputs) ASSERT_TRUE(whole.contains(output)) << output;
        std::map<std::string, std::string> before;
        for (const std::string& name : command.inputs) {
            if (fs::is_regular_file(templates() + "/" + name))
                before[name] = test::readFile(templates() + "/" + name);
        }
        for (const Fault& fault : everyFault()) {
            int calls = 0;
            for (int first = 1; first < kMostCalls; first += stride) {
                SCOPED_TRACE(command.name + ": " + fault.name() + ", call " + std::to_string(first));
                const auto result = run(command, fault, first);
                if (!hasFailed()) break;
                ++calls;
                expectNothingHalfWritten(command, result, before, whole);
                if (mustBeReported(command, fault)) {
                    EXPECT_NE(result.exit_code, 0) << "the failure is kept secret";
                }
                if (command.is_repeatable && result.exit_code != 13) {
                    const auto again = runAgain(command, none, 1);
                    EXPECT_EQ(again.exit_code, 0) << result.err << again.err;
                    for (const std::string& output : command.outputs)
                        EXPECT_TRUE(files()[output] == whole.at(output)) << output;
                }
                if (HasFailure()) return;
            }
            ASSERT_LT(calls, kMostCalls / stride);
            reached_[fault.call] += calls;
        }
    }

    test::TemporaryFolder folder_;
    std::map<std::string, int> reached_;  // runs with a failed call, by its kind
};

TEST_F(FailingCalls, OfARenderLeaveAWholeFileOrNone) {
    test::makeQuietSpeech(templates() + "/in.wav", 2, {"-t", "0.3"});
    failEveryCall({.name = "render",
                   .arguments = {"render", work() + "/in.wav", work() + "/out.wav", "--quiet"},
                   .inputs = {"in.wav"},
                   .outputs = {"out.wav"},
                   .harmless_codes = {0, 13}},
                  test::sweepStride(13));
    for (const char* call : {"open", "read", "write", "sync", "close", "rename"}) {
        EXPECT_GT(reached_[call], 0) << call;
    }
}

TEST_F(FailingCalls, OfAReplacementLeaveTheOldFileOrTheNewOne) {
    test::makeQuietSpeech(templates() + "/in.flac", 2, {"-t", "0.3"});
    test::writeFile(templates() + "/out.mka", "the old file");
    failEveryCall({.name = "threaded render that replaces a file",
                   .arguments = {"render", work() + "/in.flac", work() + "/out.mka", "--force", "--threaded",
                                 "--quiet"},
                   .inputs = {"in.flac", "out.mka"},
                   .outputs = {"out.mka"},
                   .harmless_codes = {0, 13}},
                  test::sweepStride(17));
    for (const char* call : {"sync", "rename", "thread"}) EXPECT_GT(reached_[call], 0) << call;
}

TEST_F(FailingCalls, OfABatchLeaveWholeFilesAndAJournalThatTheNextOneReads) {
    if (!test::failsEveryCall()) GTEST_SKIP() << "only where every call fails, as a long test";
    fs::create_directory(templates() + "/in");
    test::makeQuietSpeech(templates() + "/in/a.wav", 1, {"-t", "0.1"});
    test::makeQuietSpeech(templates() + "/in/b.wav", 1, {"-t", "0.1"});
    Command batch;
    batch.name = "batch";
    batch.arguments = {"render", "--batch", work() + "/in", "-o", work() + "/out", "--jobs", "1", "--quiet"};
    batch.inputs = {"in"};
    batch.outputs = {"out/a.wav", "out/b.wav"};
    batch.harmless_codes = {0, 13};
    batch.is_repeatable = true;
    failEveryCall(batch, 3);  // each run starts three programs
    for (const char* call : {"open", "write", "rename"}) EXPECT_GT(reached_[call], 0) << call;
}

TEST_F(FailingCalls, OfAPresetLeaveItWholeOrAway) {
    if (!test::failsEveryCall()) GTEST_SKIP() << "only where every call fails, as a long test";
    failEveryCall({.name = "save a preset",
                   .arguments = {"render", "--effect", "surround", "--save-preset", work() + "/mine.conf"},
                   .inputs = {},
                   .outputs = {"mine.conf"}},
                  1);
    EXPECT_GT(reached_["write"], 0);
}

TEST_F(FailingCalls, OfAPlotLeaveItWholeOrAway) {
    if (!test::failsEveryCall()) GTEST_SKIP() << "only where every call fails, as a long test";
    failEveryCall(
        {.name = "plot",
         .arguments = {"responses", "--set", "bingo-7.1", "--source", "7", "--plot", work() + "/plot.svg"},
         .inputs = {},
         .outputs = {"plot.svg"}},
        5);
    EXPECT_GT(reached_["write"], 0);
}

TEST_F(FailingCalls, OfAMeasurementNameTheFile) {
    if (!test::failsEveryCall()) GTEST_SKIP() << "only where every call fails, as a long test";
    test::makeQuietSpeech(templates() + "/in.wav", 2, {"-t", "0.3"});
    failEveryCall({.name = "inspect",
                   .arguments = {"inspect", work() + "/in.wav"},
                   .inputs = {"in.wav"},
                   .outputs = {},
                   .harmless_codes = {0, 13}},
                  1);
    EXPECT_GT(reached_["read"], 0);
}

TEST_F(FailingCalls, OfARawFileNameIt) {
    if (!test::failsEveryCall()) GTEST_SKIP() << "only where every call fails, as a long test";
    const std::string name = "sonivex_surround_output_12345678.pcm";
    test::makeQuietSpeech(templates() + "/" + name, 2, {"-t", "0.3", "-f", "s16le"});
    Command inspect;
    inspect.name = "inspect a raw file";
    inspect.arguments = {"inspect", work() + "/" + name};
    inspect.inputs = {name};
    failEveryCall(inspect, 1);
    EXPECT_GT(reached_["read"], 0);
}

}  // namespace
