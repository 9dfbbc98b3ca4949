#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace sonivex_tool {

/** How one file of a batch ended. */
enum class BatchOutcome { Rendered, Skipped, Failed };

/** The result of one file of a batch. */
struct BatchResult {
    BatchOutcome outcome = BatchOutcome::Rendered;
    std::string input;
    std::string output;
    int exit_code = 0;
    bool is_damaged = false;  // a part of the input is lost; the output is complete
    std::string error;        // why it failed, or what is lost of a damaged input; empty: nothing
    double seconds = 0.0;     // its processing time by the clock
    std::string report;       // of its process, a JSON object; empty if there is none
};

/** The result of a batch. */
struct BatchReport {
    size_t rendered = 0;
    size_t skipped = 0;
    size_t not_begun = 0;  // after an interruption
    std::vector<BatchResult> failures;
    std::vector<BatchResult> damaged;  // complete outputs of damaged inputs, among them those of before
    double seconds = 0.0;
};

/** Formats one file's result as one JSON object on one line. Bytes that are not UTF-8 are replaced. */
std::string asJson(const BatchResult& result);
/** Formats the counts of a batch as one JSON object on one line. */
std::string asJson(const BatchReport& report);
/** Says on one line what is wrong with a file that failed or is damaged: the input and the reason. */
std::string errorLine(const BatchResult& result);
/** Formats a batch for people: counts, and why each file failed. */
std::string asText(const BatchReport& report);

}  // namespace sonivex_tool
