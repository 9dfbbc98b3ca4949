#include "batch_run.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <deque>
#include <filesystem>
#include <list>
#include <memory>
#include <optional>
#include <string_view>
#include <system_error>

#include "absolute_path.h"
#include "batch_journal.h"
#include "batch_list.h"
#include "batch_plan.h"
#include "child_process.h"
#include "failure.h"
#include "file_stamp.h"
#include "interrupt.h"
#include "write_errors.h"

namespace sonivex_tool {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kLongestPoll_ms = 50;  // a signal or a child's end may come just before the wait

double secondsSince(Clock::time_point start) {
    return std::chrono::duration<double>(Clock::now() - start).count();
}

bool isComplete(int exit_code) {
    return exit_code == static_cast<int>(ExitCode::Success) ||
           exit_code == static_cast<int>(ExitCode::InputDamaged);
}

// Every output depends on these options. A file named among the options counts with its stamp.
std::vector<std::string> basisOf(const BatchSettings& settings) {
    std::vector<std::string> basis = {"sonivex " SONIVEX_VERSION};
    basis.insert(basis.end(), settings.options.begin(), settings.options.end());
    for (const std::string& path : settings.key_files) {
        const auto stamp = stampOf(path);
        if (!stamp) continue;
        basis.push_back(absolutePath(path).lexically_normal().string() + ": " +
                        std::to_string(stamp->size_bytes) + " bytes, " + std::to_string(stamp->mtime_ns));
    }
    return basis;
}

// The error in what a process wrote to standard error: its last line, if that is an error. What stands before
// may come from the libraries that it uses.
std::string errorIn(const std::string& messages) {
    constexpr std::string_view kPrefix = "sonivex: ";
    const size_t end = messages.find_last_not_of('\n');
    if (end == std::string::npos) return {};
    const size_t line_break = messages.find_last_of('\n', end);
    const size_t start = line_break == std::string::npos ? 0 : line_break + 1;
    const std::string line = messages.substr(start, end + 1 - start);
    return line.starts_with(kPrefix) ? line.substr(kPrefix.size()) : std::string();
}

// Makes the folder and those above it. @throw Failure
void makeFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    std::error_code not_seen;  // the folder's parent may forbid to look
    if (fs::is_directory(folder, not_seen)) return;
    const std::string why = error ? error.message() : "it is not a folder";
    throw Failure(exitCodeOfWriteError(error.value()),
                  "cannot make the folder \"" + folder.string() + "\": " + why);
}

struct Job {
    BatchItem item;
    FinishedFile file;
    bool has_input_stamp = false;
    Clock::time_point start = Clock::now();
    std::unique_ptr<ChildProcess> child;
};

class Batch {
  public:
    Batch(const BatchSettings& settings, Console& console,
          const std::function<void(const BatchResult&)>& on_result)
        : settings_(settings),
          console_(console),
          on_result_(on_result),
          journal_(settings.output_folder, settings.shard, basisOf(settings)) {}

    BatchReport run(const std::vector<BatchItem>& items) {
        for (const std::string& note : journal_.notes()) console_.note(note);
        waiting_.assign(items.begin(), items.end());
        total_ = items.size();
        while (!waiting_.empty() || !running_.empty()) {
            while (!waiting_.empty() && running_.size() < static_cast<size_t>(settings_.jobs) &&
                   pendingSignal() == 0) {
                const BatchItem item = waiting_.front();
                waiting_.pop_front();
                begin(item);
            }
            if (pendingSignal() != 0) {
                if (running_.empty()) break;
                stopAll();
            }
            if (!running_.empty()) wait();
            showProgress();
        }
        report_.not_begun = waiting_.size() + interrupted_;
        report_.seconds = secondsSince(start_);
        return std::move(report_);
    }

  private:
    void begin(const BatchItem& item) {
        Job job{.item = item, .file = {}, .start = Clock::now(), .child = nullptr};
        try {
            prepare(job);
            if (job.child == nullptr) return;  // finished before
        } catch (const FileFailure& failure) {
            fail(job, failure.exit_code, failure.error);
            return;
        }
        running_.push_back(std::move(job));
    }

    struct FileFailure {
        ExitCode exit_code;
        std::string error;
    };

    // Starts the job's process, or reports the job as skipped.
    void prepare(Job& job) {
        const BatchItem& item = job.item;
        job.file.name = item.name;
        job.file.input = absolutePath(item.input).lexically_normal().string();
        const auto input_stamp = stampOf(item.input);
        const auto output_stamp = stampOf(item.output);
        job.has_input_stamp = input_stamp.has_value();
        if (input_stamp) job.file.input_stamp = *input_stamp;
        if (input_stamp && output_stamp) {
            job.file.output_stamp = *output_stamp;
            if (const auto exit_code = journal_.exitCodeOf(job.file)) return skip(job, *exit_code);
        }
        if (output_stamp && !settings_.replace_output && !journal_.knows(item.name)) {
            throw FileFailure{ExitCode::OutputExists, "cannot write \"" + item.output +
                                                          "\": it already exists, and no batch has "
                                                          "written it (--force replaces it)"};
        }
        try {
            makeFolder(fs::path(item.output).parent_path());
        } catch (const Failure& failure) {
            throw FileFailure{failure.exitCode(), failure.what()};
        }
        if (!journal_.knows(item.name)) journal_.addBegun(item.name);
        std::vector<std::string> arguments = {"render"};
        arguments.insert(arguments.end(), settings_.options.begin(), settings_.options.end());
        arguments.insert(arguments.end(), {"--json", "--force"});
        arguments.emplace_back(settings_.verbose ? "--verbose" : "--quiet");
        arguments.insert(arguments.end(), {item.input, item.output});
        try {
            job.child = std::make_unique<ChildProcess>(arguments);
        } catch (const std::system_error& error) {
            throw FileFailure{ExitCode::Internal, std::string("cannot start a process: ") + error.what()};
        }
    }

    void wait() {
        std::vector<pollfd> descriptors;
        for (const Job& job : running_) {
            if (job.child->readable() >= 0) descriptors.push_back({job.child->readable(), POLLIN, 0});
        }
        // A child that has closed its streams but still runs, and a signal, are noticed by the time limit.
        (void)::poll(descriptors.data(), descriptors.size(), kLongestPoll_ms);
        for (auto job = running_.begin(); job != running_.end();) {
            if (job->child->poll()) {
                finish(*job);
                job = running_.erase(job);
            } else {
                ++job;
            }
        }
    }

    void stopAll() {
        if (is_stopping_) return;
        is_stopping_ = true;
        for (const Job& job : running_) job.child->send(SIGTERM);
    }

    void skip(const Job& job, int exit_code) {
        ++report_.skipped;
        BatchResult result = resultOf(job, BatchOutcome::Skipped, exit_code);
        if (result.is_damaged) result.error = "a part of it was lost when it was rendered";
        report(std::move(result));
    }

    void fail(const Job& job, ExitCode exit_code, const std::string& error) {
        BatchResult result = resultOf(job, BatchOutcome::Failed, static_cast<int>(exit_code));
        result.error = error;
        report(std::move(result));
    }

    void finish(Job& job) {
        const ChildProcess& child = *job.child;
        const int exit_code = child.exitCode();
        if (settings_.verbose && !child.err().empty()) {
            std::string messages = job.item.input + ":\n" + child.err();
            if (messages.back() == '\n') messages.pop_back();
            console_.note(messages);
        }
        const bool is_interrupted = exit_code == static_cast<int>(ExitCode::Interrupted) ||
                                    exit_code == static_cast<int>(ExitCode::Terminated);
        if (is_stopping_ && is_interrupted) {
            ++interrupted_;
            return;
        }
        BatchResult result = resultOf(job, BatchOutcome::Rendered, exit_code);
        result.report = child.out();
        result.error = errorIn(child.err());
        const auto stamp = stampOf(job.item.output);
        if (isComplete(exit_code) && stamp) {
            job.file.output_stamp = *stamp;
            job.file.exit_code = exit_code;
            if (job.has_input_stamp) journal_.addFinished(job.file);
            ++report_.rendered;
            report(std::move(result));
            return;
        }
        result.outcome = BatchOutcome::Failed;
        result.is_damaged = false;
        if (child.signal() != 0) {
            result.error = std::string("its process was ended by a signal: ") + ::strsignal(child.signal());
        } else if (result.error.empty()) {
            result.error = "its process ended without a message";
        }
        report(std::move(result));
    }

    void report(BatchResult result) {
        on_result_(result);
        if (result.outcome == BatchOutcome::Failed) {
            report_.failures.push_back(std::move(result));
        } else if (result.is_damaged) {
            report_.damaged.push_back(std::move(result));
        }
    }

    static BatchResult resultOf(const Job& job, BatchOutcome outcome, int exit_code) {
        BatchResult result;
        result.outcome = outcome;
        result.input = job.item.input;
        result.output = job.item.output;
        result.exit_code = exit_code;
        result.is_damaged = exit_code == static_cast<int>(ExitCode::InputDamaged);
        result.seconds = secondsSince(job.start);
        return result;
    }

    void showProgress() {
        const size_t failed = report_.failures.size();
        console_.progress(FileCounts{.done = report_.rendered + report_.skipped + failed,
                                     .total = total_,
                                     .failed = failed,
                                     .running = running_.size()});
    }

    const BatchSettings& settings_;
    Console& console_;
    const std::function<void(const BatchResult&)>& on_result_;
    BatchJournal journal_;
    std::deque<BatchItem> waiting_;
    std::list<Job> running_;
    BatchReport report_;
    size_t total_ = 0;
    size_t interrupted_ = 0;
    bool is_stopping_ = false;
    Clock::time_point start_ = Clock::now();
};

}  // namespace

BatchReport runBatch(const BatchSettings& settings, Console& console,
                     const std::function<void(const BatchResult&)>& on_result) {
    const auto items = planBatch(readList(settings.list, settings.output_folder), settings);
    makeFolder(settings.output_folder);
    return Batch(settings, console, on_result).run(items);
}

}  // namespace sonivex_tool
