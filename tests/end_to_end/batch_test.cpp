// `sonivex render --batch` renders many files, skips what is finished, and reports what failed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <map>
#include <sstream>
#include <thread>

#include "end_to_end/media/media.h"
#include "end_to_end/media/render_fixture.h"

namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr char kStateFile[] = "out/.sonivex-batch.jsonl";

class Batch : public test::RenderTest {
  protected:
    // Makes the files of the test: two short ones with recorded speech.
    void makeInputs() {
        fs::create_directory(file("in"));
        test::makeQuietSpeech(file("in/a.wav"), 2);
        test::makeQuietSpeech(file("in/b.flac"), 1);
    }

    // Makes stereo noise that takes long enough to render that a signal comes in between.
    void makeLongInputs(int count) {
        fs::create_directory(file("in"));
        for (int i = 0; i < count; ++i) {
            test::ffmpeg({"-f", "lavfi", "-i",
                          "anoisesrc=duration=40:sample_rate=48000:amplitude=0.1:seed=" + std::to_string(i),
                          "-ac", "2", file("in/" + std::to_string(i) + ".wav")});
        }
    }

    std::vector<std::string> batchCommand(const std::vector<std::string>& more = {}) {
        std::vector<std::string> arguments = {"--batch", file("in"), "-o", file("out")};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return arguments;
    }

    // Runs the batch with --json and checks the exit code. Returns each input's result by its name, and the
    // summary as "summary".
    std::map<std::string, nlohmann::json> batch(const std::vector<std::string>& more = {},
                                                int exit_code = 0) {
        auto arguments = batchCommand(more);
        arguments.insert(arguments.end(), {"--json", "--quiet"});
        return resultsOf(run(arguments), exit_code);
    }

    static std::map<std::string, nlohmann::json> resultsOf(const test::ProcessResult& result, int exit_code) {
        EXPECT_EQ(result.exit_code, exit_code) << result.err;
        std::map<std::string, nlohmann::json> results;
        std::istringstream lines(result.out);
        for (std::string line; std::getline(lines, line);) {
            const auto object = nlohmann::json::parse(line);
            const std::string name = object.contains("input")
                                         ? fs::path(object.at("input").get<std::string>()).filename().string()
                                         : object.at("result").get<std::string>();
            EXPECT_TRUE(results.emplace(name, object).second) << "two results for " << name;
        }
        return results;
    }

    // Renders one file by itself and returns its bytes.
    std::string single(const std::string& input, const std::vector<std::string>& more = {}) {
        const std::string output = file("single" + fs::path(input).extension().string());
        std::vector<std::string> arguments = {file("in/" + input), output, "--force", "--quiet"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        EXPECT_EQ(run(arguments).exit_code, 0);
        return test::readFile(output);
    }

    // Names in a folder and its sub-folders, without the state files.
    std::vector<std::string> outputs() {
        std::vector<std::string> names;
        for (const auto& entry : fs::recursive_directory_iterator(file("out"))) {
            const std::string name = entry.path().lexically_relative(file("out")).string();
            if (name.rfind(".sonivex-batch", 0) != 0) names.push_back(name);
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    // Waits until the condition holds. Fails the test after a minute.
    static void waitUntil(const std::function<bool()>& holds) {
        for (int i = 0; i < 6000 && !holds(); ++i) std::this_thread::sleep_for(std::chrono::milliseconds(10));
        ASSERT_TRUE(holds());
    }

    bool aFileIsFinished() { return test::readFile(file(kStateFile)).find("exit_code") != std::string::npos; }
    bool aFileIsUnfinished() {
        const auto names = outputs();
        return std::any_of(names.begin(), names.end(),
                           [](const std::string& name) { return name.ends_with(".part"); });
    }
};

TEST_F(Batch, GivesTheBytesOfSingleRendersWithAnyNumberOfJobs) {
    makeInputs();
    const auto results = batch({"--effect", "surround", "--jobs", "1"});
    EXPECT_EQ(results.at("summary").at("rendered"), 2);
    EXPECT_EQ(results.at("a.wav").at("result"), "rendered");
    EXPECT_EQ(results.at("a.wav").at("output"), file("out/a.wav"));
    EXPECT_EQ(results.at("a.wav").at("report").at("effect"), "surround");
    EXPECT_THAT(outputs(), ElementsAre("a.wav", "b.flac"));
    for (const char* name : {"a.wav", "b.flac"}) {
        EXPECT_EQ(test::readFile(file(std::string("out/") + name)), single(name, {"--effect", "surround"}))
            << name;
    }
    fs::rename(file("out"), file("one_job"));
    batch({"--effect", "surround", "--jobs", "4"});
    for (const char* name : {"a.wav", "b.flac"}) {
        EXPECT_EQ(test::readFile(file(std::string("out/") + name)),
                  test::readFile(file(std::string("one_job/") + name)));
    }
}

TEST_F(Batch, KeepsSubFoldersAndWritesTheChosenFormat) {
    makeInputs();
    fs::create_directories(file("in/disc 1/x"));
    fs::rename(file("in/b.flac"), file("in/disc 1/x/b.flac"));
    test::writeFile(file("in/notes.txt"), "no audio");
    batch({"--extension", "wav"});
    EXPECT_THAT(outputs(), ElementsAre("a.wav", "disc 1", "disc 1/x", "disc 1/x/b.wav"));
    EXPECT_EQ(test::probe(file("out/disc 1/x/b.wav")).at("format").at("format_name"), "wav");
}

TEST_F(Batch, GivesOutputsTheExtensionOfTheFormatThatIsAskedFor) {
    makeInputs();
    batch({"--format", "flac"});
    EXPECT_THAT(outputs(), ElementsAre("a.flac", "b.flac"));
}

TEST_F(Batch, ReadsAListFromAFileOrFromStandardInput) {
    makeInputs();
    test::writeFile(file("list.txt"), "in/a.wav\nin/b.flac\tsub/other.wav\r\n");
    const test::ProcessOptions here{.file_size_limit_bytes = {}, .working_folder = folder_.path()};
    EXPECT_EQ(run({"--batch", "list.txt", "-o", "out"}, here).exit_code, 0);
    EXPECT_THAT(outputs(), ElementsAre("a.wav", "sub", "sub/other.wav"));
    const auto piped = test::runProcess(
        {"sh", "-c", R"(ls in/*.wav | "$0" render --batch - -o out --json)", SONIVEX_PROGRAM}, here);
    EXPECT_EQ(resultsOf(piped, 0).at("a.wav").at("result"), "skipped");
}

TEST_F(Batch, StopsReadingAListThatHasNoEnd) {
    // More than a list may be, and an end after all, so that a program without a limit fails here, too.
    const auto result = test::runProcess({"sh", "-c",
                                          R"(yes in/a.wav | head -c 80000000 |)"
                                          R"( "$0" render --batch - -o "$1")",
                                          SONIVEX_PROGRAM, file("out")});
    EXPECT_EQ(result.exit_code, 2);
    EXPECT_EQ(result.err, "sonivex: \"standard input\" is longer than 64 MiB, the most that a list may be\n");
    EXPECT_FALSE(fs::exists(file("out")));
}

TEST_F(Batch, SkipsFinishedFilesAndRendersAnewWhatHasChanged) {
    makeInputs();
    batch();
    auto results = batch();
    EXPECT_EQ(results.at("summary").at("skipped"), 2);
    EXPECT_EQ(results.at("summary").at("rendered"), 0);

    test::makeQuietSpeech(file("in/a.wav"), 1);  // a changed input
    results = batch();
    EXPECT_EQ(results.at("a.wav").at("result"), "rendered");
    EXPECT_EQ(results.at("b.flac").at("result"), "skipped");
    EXPECT_EQ(test::readFile(file("out/a.wav")), single("a.wav"));

    fs::remove(file("out/b.flac"));  // a removed output
    results = batch();
    EXPECT_EQ(results.at("a.wav").at("result"), "skipped");
    EXPECT_EQ(results.at("b.flac").at("result"), "rendered");

    test::writeFile(file("out/b.flac"), "damaged");  // an output that somebody changed
    EXPECT_EQ(batch().at("b.flac").at("result"), "rendered");
    EXPECT_EQ(test::readFile(file("out/b.flac")), single("b.flac"));

    results = batch({"--effect=surround"});  // another option
    EXPECT_EQ(results.at("summary").at("rendered"), 2);
    EXPECT_EQ(test::readFile(file("out/a.wav")), single("a.wav", {"--effect", "surround"}));
    EXPECT_EQ(batch({"--effect", "surround", "--jobs", "2"}).at("summary").at("skipped"), 2);
}

TEST_F(Batch, RendersAnewWhenAFileThatAnOptionNamesHasChanged) {
    makeInputs();
    const fs::path own = fs::path(SONIVEX_PROGRAM).parent_path().parent_path() / "lib/libSonivexFilter.so";
    ASSERT_TRUE(fs::exists(own));
    fs::copy_file(own, file("plugin.so"));
    const std::vector<std::string> options = {"--plugin", file("plugin.so")};
    batch(options);
    EXPECT_EQ(batch(options).at("summary").at("skipped"), 2);
    fs::last_write_time(file("plugin.so"), fs::last_write_time(own) + std::chrono::hours(1));
    EXPECT_EQ(batch(options).at("summary").at("rendered"), 2);
}

TEST_F(Batch, RendersAnewWhenItsPresetHasChanged) {
    makeInputs();
    test::writeFile(file("my.preset"), "effect = surround\n");
    const std::vector<std::string> options = {"--preset", file("my.preset")};
    batch(options);
    EXPECT_EQ(test::readFile(file("out/a.wav")), single("a.wav", {"--effect", "surround"}));
    EXPECT_EQ(batch(options).at("summary").at("skipped"), 2);
    test::writeFile(file("my.preset"), "effect = surround\ntype = MegaBass\n");
    EXPECT_EQ(batch(options).at("summary").at("rendered"), 2);
}

TEST_F(Batch, PassesOptionsOnAsTheyWereTyped) {
    makeInputs();
    batch(
        {"--flush-at=0.2", "--raw-latency", "--flush-at", "0.5", "--effect=surround", "--type", "MegaBass"});
    const std::vector<std::string> options = {"--flush-at", "0.2",           "--flush-at",
                                              "0.5",        "--raw-latency", "--effect",
                                              "surround",   "--type",        "MegaBass"};
    EXPECT_EQ(test::readFile(file("out/a.wav")), single("a.wav", options));
}

TEST_F(Batch, TakesAnOptionWithAnEmptyValue) {
    makeInputs();
    EXPECT_EQ(batch({"--plugin", ""}).at("summary").at("rendered"), 2);
}

TEST_F(Batch, ReportsWhatFailedAndWhyAndGoesOn) {
    makeInputs();
    test::writeFile(file("in/0.wav"), "This is no sound at all.\n");
    test::ffmpeg({"-f", "lavfi", "-i", "testsrc=duration=1:size=64x64", "-c:v", "mpeg4", file("in/1.mkv")});
    const auto results = batch({}, 14);
    EXPECT_EQ(results.at("summary").at("failed"), 2);
    EXPECT_EQ(results.at("summary").at("rendered"), 2);
    EXPECT_EQ(results.at("0.wav").at("result"), "failed");
    EXPECT_EQ(results.at("0.wav").at("exit_code"), 3);
    EXPECT_THAT(results.at("0.wav").at("error"), HasSubstr("unknown file format"));
    EXPECT_EQ(results.at("1.mkv").at("exit_code"), 4);
    EXPECT_THAT(outputs(), ElementsAre("a.wav", "b.flac"));

    const auto text = run(batchCommand());
    EXPECT_EQ(text.exit_code, 14);
    EXPECT_THAT(text.out, HasSubstr("skipped   2 files"));
    EXPECT_THAT(text.out, HasSubstr("0.wav: cannot open"));
    EXPECT_THAT(text.out, HasSubstr("(exit code 4)"));
    EXPECT_EQ(text.err, "sonivex: 2 of 4 files failed\n");

    const auto quiet = run(batchCommand({"--quiet"}));
    EXPECT_EQ(quiet.exit_code, 14);
    EXPECT_EQ(quiet.out, "");
    EXPECT_THAT(quiet.err, HasSubstr("sonivex: " + file("in/0.wav") + ": cannot open"));
    EXPECT_THAT(quiet.err, HasSubstr("sonivex: " + file("in/1.mkv") + ": "));
    EXPECT_THAT(quiet.err, HasSubstr("sonivex: 2 of 4 files failed\n"));
    EXPECT_EQ(std::count(quiet.err.begin(), quiet.err.end(), '\n'), 3);

    fs::remove(file("in/0.wav"));
    fs::remove(file("in/1.mkv"));
    EXPECT_EQ(batch().at("summary").at("skipped"), 2);
}

TEST_F(Batch, CountsAFolderThatItCannotMakeAsAFailureOfItsFile) {
    makeInputs();
    // The system does not even look up a name that is so long.
    const std::string too_long(300, 'x');
    test::writeFile(file("list.txt"),
                    file("in/a.wav") + "\t" + too_long + "/a.wav\n" + file("in/b.flac") + "\n");
    const auto results =
        resultsOf(run({"--batch", file("list.txt"), "-o", file("out"), "--json", "--quiet"}), 14);
    EXPECT_EQ(results.at("a.wav").at("exit_code"), 7);
    EXPECT_THAT(results.at("a.wav").at("error"), HasSubstr("cannot make the folder"));
    EXPECT_EQ(results.at("b.flac").at("result"), "rendered");
}

TEST_F(Batch, CountsRelativeInputsAsFailuresIfItsWorkingDirectoryIsGone) {
    makeInputs();
    fs::create_directory(file("gone"));
    test::writeFile(file("list.txt"), "c.wav\n" + file("in/a.wav") + "\n");
    const std::string start =
        R"(rmdir "$PWD" && exec "$0" render --batch ../list.txt -o "$1" --json --quiet)";
    const test::ProcessOptions in_gone{.file_size_limit_bytes = {}, .working_folder = file("gone")};
    const auto results =
        resultsOf(test::runProcess({"sh", "-c", start, SONIVEX_PROGRAM, file("out")}, in_gone), 14);
    EXPECT_EQ(results.at("c.wav").at("exit_code"), 3);
    EXPECT_EQ(results.at("a.wav").at("result"), "rendered");
}

TEST_F(Batch, ReportsDamagedInputsAgainWhenItSkipsThem) {
    makeInputs();
    const auto size = fs::file_size(file("in/b.flac"));
    fs::resize_file(file("in/b.flac"), size / 2);
    for (const char* expected : {"rendered", "skipped"}) {
        const auto results = batch({}, 13);
        EXPECT_EQ(results.at("b.flac").at("result"), expected);
        EXPECT_EQ(results.at("b.flac").at("exit_code"), 13);
        EXPECT_EQ(results.at("b.flac").at("damaged"), true);
        EXPECT_TRUE(results.at("b.flac").at("error").is_null());
        EXPECT_EQ(results.at("a.wav").at("damaged"), false);
        EXPECT_EQ(results.at("summary").at("damaged"), 1);
        EXPECT_EQ(results.at("summary").at("failed"), 0);
    }
    const auto text = run(batchCommand());
    EXPECT_EQ(text.exit_code, 13);
    EXPECT_THAT(text.out, HasSubstr("damaged   1 file"));
    EXPECT_THAT(text.err, HasSubstr("sonivex: a part of 1 of 2 files is lost"));
    EXPECT_EQ(batch({"--ignore-damage"}).at("summary").at("damaged"), 0);
    test::writeFile(file("in/0.wav"), "This is no sound at all.\n");
    EXPECT_EQ(batch({}, 14).at("summary").at("damaged"), 1);
}

TEST_F(Batch, LeavesAFileThatItHasNotWritten) {
    makeInputs();
    fs::create_directory(file("out"));
    test::writeFile(file("out/a.wav"), "precious");
    EXPECT_EQ(batch({}, 14).at("a.wav").at("exit_code"), 6);
    EXPECT_EQ(test::readFile(file("out/a.wav")), "precious");
    EXPECT_EQ(batch({"--force"}).at("a.wav").at("result"), "rendered");
    EXPECT_EQ(test::readFile(file("out/a.wav")), single("a.wav"));
}

TEST_F(Batch, LeavesNothingHalfWrittenWhenItIsKilledAndThenCompletesItsWork) {
    makeLongInputs(6);
    const auto count = [this](const std::string& ending) {
        const auto names = outputs();
        return std::count_if(names.begin(), names.end(),
                             [&](const std::string& name) { return name.ends_with(ending); });
    };
    std::ptrdiff_t finished_before = 0;
    {
        test::Process process(command(batchCommand({"--jobs", "2", "--effect", "surround"})));
        // Two files are being written, so two more would be finished if their processes went on. Nothing
        // moves between the count and the end of the batch.
        waitUntil([&] {
            if (!fs::exists(file(kStateFile)) || !aFileIsFinished() || count(".part") < 2) return false;
            process.pause();
            if (count(".part") >= 2) return true;
            process.resume();
            return false;
        });
        finished_before = count(".wav");
        process.send(SIGKILL);
        EXPECT_EQ(process.wait().signal, SIGKILL);
        process.resume();
    }
    waitUntil([this] { return !aFileIsUnfinished(); });  // the processes of the files notice it
    const auto finished = outputs();
    EXPECT_THAT(finished, Not(IsEmpty()));
    // They end with the batch and do not finish their work. One of the two may just have done so.
    EXPECT_LE(count(".wav"), finished_before + 1);
    for (const std::string& name : finished)
        EXPECT_EQ(test::readFile(file("out/" + name)), single(name, {"--effect", "surround"})) << name;

    const auto results = batch({"--effect", "surround"});
    EXPECT_GE(results.at("summary").at("skipped"), 1);
    EXPECT_GE(results.at("summary").at("rendered"), 1);
    EXPECT_THAT(outputs(), ElementsAre("0.wav", "1.wav", "2.wav", "3.wav", "4.wav", "5.wav"));
    for (const std::string& name : outputs())
        EXPECT_EQ(test::readFile(file("out/" + name)), single(name, {"--effect", "surround"})) << name;
}

TEST_F(Batch, StopsAtASignalAndContinuesLater) {
    makeLongInputs(4);
    for (const auto& [signal, exit_code] : {std::pair(SIGINT, 130), std::pair(SIGTERM, 143)}) {
        fs::remove_all(file("out"));
        test::Process process(command(batchCommand({"--jobs", "1", "--effect", "surround"})));
        waitUntil(
            [this] { return fs::exists(file(kStateFile)) && aFileIsFinished() && aFileIsUnfinished(); });
        process.send(signal);
        const auto result = process.wait();
        EXPECT_EQ(result.exit_code, exit_code);
        EXPECT_THAT(result.out, HasSubstr("open      "));
        EXPECT_THAT(result.err, HasSubstr("sonivex: interrupted"));
        EXPECT_FALSE(aFileIsUnfinished());
        EXPECT_LT(outputs().size(), 4U);
    }
    const size_t finished = outputs().size();
    const auto results = batch({"--effect", "surround"});
    EXPECT_EQ(results.at("summary").at("skipped"), finished);
    EXPECT_EQ(results.at("summary").at("rendered"), 4 - finished);
}

TEST_F(Batch, SharesItsWorkAmongShardsThatRunAtOnce) {
    makeInputs();
    test::Process first(command(batchCommand({"--shard", "1/2", "--json", "--quiet"})));
    test::Process second(command(batchCommand({"--shard", "2/2", "--json", "--quiet"})));
    EXPECT_EQ(resultsOf(first.wait(), 0).at("a.wav").at("result"), "rendered");
    EXPECT_EQ(resultsOf(second.wait(), 0).at("b.flac").at("result"), "rendered");
    EXPECT_EQ(batch().at("summary").at("skipped"), 2);
    EXPECT_EQ(batch({"--shard", "3/3"}).at("summary").at("rendered"), 0);
}

TEST_F(Batch, RefusesToWorkWhereAnotherBatchIsAtWork) {
    makeLongInputs(2);
    test::Process first(command(batchCommand({"--jobs", "1", "--quiet"})));
    waitUntil([this] { return fs::exists(file("out")) && aFileIsUnfinished(); });
    const auto second = run(batchCommand());
    EXPECT_EQ(second.exit_code, 7);
    EXPECT_THAT(second.err, HasSubstr("another batch"));
    EXPECT_EQ(first.wait().exit_code, 0);
}

TEST_F(Batch, PrintsTheLogsOfEachFileBelowItsName) {
    makeInputs();
    const auto result = run(batchCommand({"--verbose", "--jobs", "1"}));
    EXPECT_EQ(result.exit_code, 0) << result.err;
    for (const char* name : {"in/a.wav", "in/b.flac"})
        EXPECT_THAT(result.err, HasSubstr(file(name) + ":\n")) << name;
    EXPECT_THAT(result.err, Not(HasSubstr("\n\n")));
}

TEST_F(Batch, CountsAFileWhoseProcessWasKilledAsFailed) {
    fs::create_directory(file("in"));
    // The process of this file waits for a writer until it is killed.
    ASSERT_EQ(mkfifo(file("in/pipe.wav").c_str(), 0600), 0);
    test::writeFile(file("list"), file("in/pipe.wav") + "\n");
    const std::string kill_child =
        "\"$0\" \"$@\" & batch=$!; "
        "for try in $(seq 3000); do child=$(cat /proc/$batch/task/$batch/children); "
        "[ -z \"$child\" ] || break; sleep 0.01; done; "
        "kill -KILL ${child:-$batch}; wait $batch";
    std::vector<std::string> line = {"sh", "-c", kill_child};
    const auto batch = command({"--batch", file("list"), "-o", file("out"), "--json", "--quiet"});
    line.insert(line.end(), batch.begin(), batch.end());
    const auto results = resultsOf(test::runProcess(line), 14);
    EXPECT_EQ(results.at("pipe.wav").at("result"), "failed");
    EXPECT_EQ(results.at("pipe.wav").at("error"), "its process was ended by a signal: Killed");
    EXPECT_THAT(outputs(), IsEmpty());
}

TEST_F(Batch, ShowsOneDisplayOfAllFiles) {
    makeLongInputs(3);
    std::string line = SONIVEX_PROGRAM " render";
    for (const std::string& argument : batchCommand({"--jobs", "1"})) line += " " + argument;
    const auto result = test::runProcess({"script", "-qec", line, "/dev/null"});
    EXPECT_EQ(result.exit_code, 0);
    EXPECT_THAT(result.out, HasSubstr("0/3 files, 1 running"));
    EXPECT_THAT(result.out, HasSubstr("2/3 files, 1 running"));
    EXPECT_THAT(result.out, HasSubstr("rendered  3 files"));
}

TEST_F(Batch, RefusesWrongUsageBeforeAnyWork) {
    makeInputs();
    const auto expectUsage = [&](const std::vector<std::string>& arguments, const std::string& part) {
        const auto result = run(arguments);
        EXPECT_EQ(result.exit_code, 2) << result.err;
        EXPECT_THAT(result.err, HasSubstr(part));
        EXPECT_FALSE(fs::exists(file("out")));
    };
    expectUsage({"--batch", file("in")}, "--output-folder");
    expectUsage({"-o", file("out"), file("in/a.wav"), file("b.wav")}, "--batch");
    expectUsage({"--jobs", "2", file("in/a.wav"), file("b.wav")}, "--batch");
    expectUsage(batchCommand({file("in/a.wav")}), "IN");
    for (const char* jobs : {"0", "257", "many", "-1"}) expectUsage(batchCommand({"--jobs", jobs}), "--jobs");
    for (const char* shard : {"0/2", "3/2", "1", "1/", "/2", "a/b", "1/2/3", "1/1000001", "1/99999999999"})
        expectUsage(batchCommand({"--shard", shard}), "--shard");
    for (const char* extension : {"xyz", "png", ".wav", "", "sw"})
        expectUsage(batchCommand({"--extension", extension}), "--extension");
    expectUsage(batchCommand({"--dump", folder_.path()}), "--dump");
    expectUsage(batchCommand({"--dry-run"}), "--dry-run");
    expectUsage({"--batch", file("in"), "-o", file("in")}, "folder of the inputs");
    test::writeFile(file("list.txt"), file("in/a.wav") + "\n" + file("in/a.wav") + "\n");
    expectUsage({"--batch", file("list.txt"), "-o", file("out")}, "same output");
    test::writeFile(file("list.txt"), file("in/a.wav") + "\n");
    expectUsage({"--batch", file("list.txt"), "-o", file("in")}, "one of the inputs");
}

TEST_F(Batch, ReportsAListOrAFolderThatCannotBeUsed) {
    makeInputs();
    EXPECT_EQ(run({"--batch", file("none.txt"), "-o", file("out")}).exit_code, 3);
    test::writeFile(file("file"), "");
    EXPECT_EQ(run({"--batch", file("in"), "-o", file("file")}).exit_code, 7);
    EXPECT_EQ(run({"--batch", file("in"), "-o", file("file/out")}).exit_code, 7);
    // The system does not even look up a name that is so long.
    EXPECT_EQ(run({"--batch", file("in"), "-o", file(std::string(300, 'x') + "/out")}).exit_code, 7);
    EXPECT_EQ(run(batchCommand({"--plugin", file("none.so")})).exit_code, 10);
}

}  // namespace
