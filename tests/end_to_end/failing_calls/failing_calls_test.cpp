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

#include "end_to_end/failing_calls/faults.h"
#include "end_to_end/media/media.h"
#include "failing_calls/sweep.h"
#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"

namespace {

namespace fs = std::filesystem;
using std::chrono::seconds;
using test::Fault;

constexpr seconds kLongestRun(60);
constexpr int kMostCalls = 3000;
constexpr int kInternalError = 1;
constexpr int kInputNotReadable = 3;
constexpr int kOutputNotWritable = 7;
constexpr int kBatchFailed = 14;
constexpr int kNoSoundCard = 15;
constexpr int kOnlyTheFirst = kMostCalls;  // a stride

// A command on files in the folder `work`, relative to it.
struct Command {
    std::string name;
    std::vector<std::string> arguments;
    std::vector<std::string> inputs;   // copied into the folder first
    std::vector<std::string> outputs;  // of a run without a fault
    std::set<int> harmless_codes{0};   // with these the outputs are complete
    bool is_repeatable = false;        // once more without a fault, it completes what is missing
    std::string standard_input = {};   // one of the inputs; empty: none
    std::string environment = {};      // NAME=VALUE; empty: none
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
                                         "SONIVEX_FAIL_CALL=" + fault.call,
                                         "SONIVEX_FAIL_FIRST=" + std::to_string(first),
                                         "SONIVEX_FAIL_MANNER=" + fault.manner,
                                         "SONIVEX_FAIL_RESULT=" + fault.result,
                                         "SONIVEX_FAIL_FOLDER=" + work(),
                                         "SONIVEX_FAIL_MARK=" + mark(),
                                         SONIVEX_PROGRAM};
        if (!command.environment.empty()) line.insert(line.begin() + 1, command.environment);
        if (!command.standard_input.empty()) {
            line.pop_back();
            const std::string start = "exec \"$0\" \"$@\" <" + command.standard_input;
            line.insert(line.end(), {"sh", "-c", start, SONIVEX_PROGRAM});
        }
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

    // Returns whether an error names a file of the command, or the folder of its outputs.
    bool isNamed(const Command& command, const std::string& error) const {
        std::set<std::string> names(command.inputs.begin(), command.inputs.end());
        for (const std::string& output : command.outputs) {
            const std::string folder = fs::path(output).parent_path().string();
            names.insert(folder.empty() ? output : folder);
        }
        return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
            return error.find(work() + "/" + name) != std::string::npos;
        });
    }

    void expectClearEnd(const Command& command, const Fault& fault, const test::ProcessResult& result) {
        if (command.harmless_codes.contains(result.exit_code)) {
            const bool must_fail = fault.must_be_reported && !(command.is_repeatable && fault.call == "sync");
            EXPECT_FALSE(must_fail) << "the failure is kept secret";
            return;
        }
        // The process of one file fails with the code, and the batch with its own.
        const bool is_batch_failure = command.is_repeatable && result.exit_code == kBatchFailed;
        EXPECT_TRUE(fault.exit_codes.contains(result.exit_code) ||
                    (is_batch_failure && !fault.exit_codes.empty()))
            << result.exit_code << ": " << result.err;
        EXPECT_TRUE(fault.call == "thread" || isNamed(command, result.err)) << result.err;
    }

    void expectNothingHalfWritten(const Command& command, const test::ProcessResult& result,
                                  const std::map<std::string, std::string>& before,
                                  const std::map<std::string, std::string>& whole) {
        ASSERT_EQ(result.signal, 0) << "the program crashed or hung";
        const bool is_harmless = command.harmless_codes.contains(result.exit_code);
        EXPECT_TRUE(is_harmless || result.err.rfind("sonivex: ", 0) == 0) << result.err;
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

    // The state of a batch grows line by line.
    static bool isState(const std::string& name) {
        return fs::path(name).filename().string().rfind(".sonivex-batch", 0) == 0;
    }

    // Makes some calls fail, or every one in the test for the night.
    void failSomeCalls(const Command& command, int short_stride, int long_stride = 1) {
        const bool is_long = test::failsEveryCall();
        fail(command, is_long ? test::everyFault() : test::oneFaultOfEachCall(),
             is_long ? long_stride : short_stride);
    }

    void fail(const Command& command, const std::vector<Fault>& faults, int stride) {
        const Fault none{"none", "once", "0", {}};
        const auto unharmed = run(command, none, 1);
        ASSERT_TRUE(command.harmless_codes.contains(unharmed.exit_code)) << unharmed.err;
        const auto whole = files();
        for (const std::string& output : command.outputs) ASSERT_TRUE(whole.contains(output)) << output;
        std::map<std::string, std::string> before;
        for (const std::string& name : command.inputs) {
            if (fs::is_regular_file(templates() + "/" + name))
                before[name] = test::readFile(templates() + "/" + name);
        }
        for (const Fault& fault : faults) {
            int calls = 0;
            for (int first = 1; first < kMostCalls; first += stride) {
                SCOPED_TRACE(command.name + ": " + fault.name() + ", call " + std::to_string(first));
                const auto result = run(command, fault, first);
                if (!hasFailed()) break;
                ++calls;
                expectNothingHalfWritten(command, result, before, whole);
                expectClearEnd(command, fault, result);
                if (command.is_repeatable && result.exit_code != 13) {
                    const auto again = runAgain(command, none, 1);
                    EXPECT_EQ(again.exit_code, 0) << result.err << again.err;
                    for (const std::string& output : command.outputs)
                        EXPECT_TRUE(files()[output] == whole.at(output)) << output;
                }
                if (HasFailure()) return;
            }
            ASSERT_TRUE(stride == kOnlyTheFirst || calls < kMostCalls / stride);
            reached_[fault.call] += calls;
        }
    }

    test::TemporaryFolder folder_;
    std::map<std::string, int> reached_;  // runs with a failed call, by its kind
};

TEST_F(FailingCalls, OfARenderLeaveAWholeFileOrNone) {
    test::makeQuietSpeech(templates() + "/in.wav", 2, {"-t", "0.3"});
    fail({.name = "render",
          .arguments = {"render", work() + "/in.wav", work() + "/out.wav", "--quiet"},
          .inputs = {"in.wav"},
          .outputs = {"out.wav"},
          .harmless_codes = {0, 13}},
         test::everyFault(), test::sweepStride(13));
    for (const char* call : {"open", "read", "write", "sync", "close", "close-written", "rename"}) {
        EXPECT_GT(reached_[call], 0) << call;
    }
}

TEST_F(FailingCalls, OfAReplacementLeaveTheOldFileOrTheNewOne) {
    test::makeQuietSpeech(templates() + "/in.flac", 2, {"-t", "0.3"});
    test::writeFile(templates() + "/out.mka", "the old file");
    fail({.name = "threaded render that replaces a file",
          .arguments = {"render", work() + "/in.flac", work() + "/out.mka", "--force", "--threaded",
                        "--quiet"},
          .inputs = {"in.flac", "out.mka"},
          .outputs = {"out.mka"},
          .harmless_codes = {0, 13}},
         test::everyFault(), test::sweepStride(17));
    for (const char* call : {"sync", "rename", "thread"}) EXPECT_GT(reached_[call], 0) << call;
}

TEST_F(FailingCalls, OfABatchLeaveWholeFilesAndAJournalThatTheNextOneReads) {
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
    failSomeCalls(batch, kOnlyTheFirst, 3);  // each run starts three programs
    for (const char* call : {"open", "folder", "write", "close-written", "rename"})
        EXPECT_GT(reached_[call], 0) << call;
}

TEST_F(FailingCalls, OfAPresetLeaveItWholeOrAway) {
    failSomeCalls({.name = "save a preset",
                   .arguments = {"render", "--effect", "surround", "--save-preset", work() + "/mine.conf"},
                   .inputs = {},
                   .outputs = {"mine.conf"}},
                  kOnlyTheFirst);
    for (const char* call : {"open", "write", "sync", "close-written", "rename"})
        EXPECT_GT(reached_[call], 0) << call;
}

TEST_F(FailingCalls, OfAPlotLeaveItWholeOrAway) {
    failSomeCalls(
        {.name = "plot",
         .arguments = {"responses", "--set", "bingo-7.1", "--source", "7", "--plot", work() + "/plot.svg"},
         .inputs = {},
         .outputs = {"plot.svg"}},
        kOnlyTheFirst, 5);
    for (const char* call : {"open", "write", "sync", "close-written", "rename"})
        EXPECT_GT(reached_[call], 0) << call;
}

TEST_F(FailingCalls, OfAMeasurementNameTheFile) {
    test::makeQuietSpeech(templates() + "/in.wav", 2, {"-t", "0.3"});
    failSomeCalls({.name = "inspect",
                   .arguments = {"inspect", work() + "/in.wav"},
                   .inputs = {"in.wav"},
                   .outputs = {},
                   .harmless_codes = {0, 13}},
                  kOnlyTheFirst);
    EXPECT_GT(reached_["read"], 0);
}

// A comparison reads its files more than once. With what only the first reading gave, it would be wrong.
TEST_F(FailingCalls, OfASecondReadingEndAComparison) {
    test::makeQuietSpeech(templates() + "/in.wav", 2, {"-t", "0.3"});
    test::makeQuietSpeech(templates() + "/out.wav", 2, {"-t", "0.3"});
    Command compare;
    compare.arguments = {"inspect", "--pair", work() + "/in.wav", work() + "/out.wav"};
    compare.inputs = {"in.wav", "out.wav"};
    std::set<std::string> errors;
    constexpr int kStride = 3;  // each reading makes more calls
    for (int first = 1; errors.size() < 2 && first < kMostCalls; first += kStride) {
        const auto result = run(compare, {"read", "once", std::to_string(EIO), {}}, first);
        if (!hasFailed()) break;
        if (result.err.find("a second time") == std::string::npos) continue;
        EXPECT_EQ(result.exit_code, kInputNotReadable) << result.err;
        EXPECT_EQ(result.out, "");
        errors.insert(result.err);
    }
    EXPECT_THAT(errors, testing::UnorderedElementsAre(
                            "sonivex: cannot read \"" + work() + "/in.wav\" a second time\n",
                            "sonivex: cannot read \"" + work() + "/out.wav\" a second time\n"));
}

constexpr char kRawName[] = "sonivex_surround_output_12345678.pcm";

TEST_F(FailingCalls, OfARawFileNameIt) {
    const std::string name = kRawName;
    test::makeQuietSpeech(templates() + "/" + name, 2, {"-t", "0.3", "-f", "s16le"});
    Command inspect;
    inspect.name = "inspect a raw file";
    inspect.arguments = {"inspect", work() + "/" + name};
    inspect.inputs = {name};
    failSomeCalls(inspect, kOnlyTheFirst);
    EXPECT_GT(reached_["read"], 0);
}

// Network file systems interrupt a read when the process is stopped and goes on.
TEST_F(FailingCalls, ThatAreOnlyInterruptedCostNoAudio) {
    test::makeQuietSpeech(templates() + "/" + kRawName, 2, {"-t", "0.3", "-f", "s16le"});
    Command inspect;
    inspect.arguments = {"inspect", work() + "/" + kRawName, "--json"};
    inspect.inputs = {kRawName};
    const std::string whole = run(inspect, {"none", "once", "0", {}}, 1).out;
    for (int first = 1; first <= 3; ++first) {
        const auto result = run(inspect, {"read", "once", std::to_string(EINTR), {}}, first);
        EXPECT_TRUE(hasFailed());
        EXPECT_EQ(result.exit_code, 0) << result.err;
        EXPECT_EQ(result.out, whole);
    }
}

TEST_F(FailingCalls, OfStandardInputDoNotShortenAList) {
    fs::create_directory(templates() + "/in");
    test::makeQuietSpeech(templates() + "/in/a.wav", 1, {"-t", "0.1"});
    test::writeFile(templates() + "/list", work() + "/in/a.wav\n");
    Command batch;
    batch.arguments = {"render", "--batch", "-", "-o", work() + "/out", "--jobs", "1", "--quiet"};
    batch.inputs = {"in", "list"};
    batch.standard_input = "list";
    const auto interrupted = run(batch, {"read", "once", std::to_string(EINTR), {}}, 1);
    EXPECT_EQ(interrupted.exit_code, 0) << interrupted.err;
    EXPECT_TRUE(fs::exists(work() + "/out/a.wav"));
    const auto failed = run(batch, {"read", "once", std::to_string(EIO), {}}, 1);
    EXPECT_EQ(failed.exit_code, kInputNotReadable) << failed.err;
    EXPECT_EQ(failed.err, "sonivex: cannot read \"standard input\": Input/output error\n");
}

// A batch opens its list, then the state file, and then the folder of the outputs, in which it looks for
// others.
TEST_F(FailingCalls, OfABatchToOpenAFileNameIt) {
    fs::create_directory(templates() + "/in");
    test::makeQuietSpeech(templates() + "/in/a.wav", 1, {"-t", "0.1"});
    test::writeFile(templates() + "/list", work() + "/in/a.wav\n");
    Command batch;
    batch.arguments = {"render", "--batch", work() + "/list", "-o", work() + "/out",
                       "--jobs", "1",       "--quiet"};
    batch.inputs = {"in", "list"};
    const auto no_list = run(batch, {"open", "once", std::to_string(EACCES), {}}, 1);
    EXPECT_EQ(no_list.exit_code, kInputNotReadable) << no_list.err;
    EXPECT_EQ(no_list.err, "sonivex: cannot read \"" + work() + "/list\": Permission denied\n");
    // The list is opened again. The process of the file fails at its own first file, so it was started.
    const auto interrupted = run(batch, {"open", "once", std::to_string(EINTR), {}}, 1);
    EXPECT_EQ(interrupted.exit_code, kBatchFailed) << interrupted.err;
    EXPECT_THAT(interrupted.err, testing::HasSubstr("cannot open \"" + work() + "/in/a.wav\""));
    const auto no_folder = run(batch, {"open", "once", std::to_string(EIO), {}}, 3);
    EXPECT_EQ(no_folder.exit_code, kOutputNotWritable) << no_folder.err;
    EXPECT_EQ(no_folder.err, "sonivex: cannot read the folder \"" + work() + "/out\": Input/output error\n");
}

// A process that may start no thread at all.
TEST_F(FailingCalls, ToStartAThreadEndEveryCommandThatNeedsOne) {
    test::makeQuietSpeech(templates() + "/in.wav", 2, {"-t", "0.3"});
    const std::string in = work() + "/in.wav";
    for (const std::vector<std::string>& options : std::vector<std::vector<std::string>>{
             {}, {"--threaded"}, {"--target-lufs", "-20"}, {"--audio-only", "--effect", "surround"}}) {
        Command render;
        render.arguments = {"render", in, work() + "/out.wav", "--quiet"};
        render.arguments.insert(render.arguments.end(), options.begin(), options.end());
        render.inputs = {"in.wav"};
        int failed = 0;
        for (int first = 1; first <= 8; ++first) {
            SCOPED_TRACE((options.empty() ? "" : options.front()) + " " + std::to_string(first));
            const auto result = run(render, {"thread", "once", std::to_string(EAGAIN), {}}, first);
            if (!hasFailed()) break;
            ++failed;
            // The filter works on the caller's thread if it gets none of its own.
            if (result.exit_code == 0 && !options.empty() && options.front() == "--threaded") continue;
            EXPECT_EQ(result.exit_code, 1) << result.err;
            EXPECT_EQ(result.err, "sonivex: cannot start a thread: Resource temporarily unavailable\n");
            EXPECT_FALSE(fs::exists(work() + "/out.wav"));
        }
        EXPECT_GT(failed, 0);
    }
}

// The sound card's thread starts first, and then the one that reads the file.
TEST_F(FailingCalls, ToStartAThreadEndPlayback) {
    test::makeQuietSpeech(templates() + "/in.wav", 2, {"-t", "0.3"});
    Command play;
    play.arguments = {"play", work() + "/in.wav", "--quiet"};
    play.inputs = {"in.wav"};
    play.environment = "SDL_AUDIODRIVER=dummy";
    const Fault fault{"thread", "once", std::to_string(EAGAIN), {}};
    const auto no_card = run(play, fault, 1);
    EXPECT_EQ(no_card.exit_code, kNoSoundCard) << no_card.err;
    EXPECT_THAT(no_card.err, testing::StartsWith("sonivex: cannot open the default sound card: "));
    const auto no_reader = run(play, fault, 2);
    EXPECT_EQ(no_reader.exit_code, kInternalError) << no_reader.err;
    EXPECT_EQ(no_reader.err, "sonivex: cannot start a thread: Resource temporarily unavailable\n");
    const auto unharmed = run(play, fault, 3);
    EXPECT_FALSE(hasFailed());
    EXPECT_EQ(unharmed.exit_code, 0) << unharmed.err;
}

}  // namespace
