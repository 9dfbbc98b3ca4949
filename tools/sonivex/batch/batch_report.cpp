#include "batch_report.h"

#include <nlohmann/json.hpp>

#include "console.h"

namespace sonivex_tool {
namespace {

using Json = nlohmann::ordered_json;

std::string nameOf(BatchOutcome outcome) {
    switch (outcome) {
        case BatchOutcome::Rendered:
            return "rendered";
        case BatchOutcome::Skipped:
            return "skipped";
        case BatchOutcome::Failed:
            break;
    }
    return "failed";
}

std::string lineOf(const Json& object) {
    return object.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string files(size_t count) {
    return std::to_string(count) + (count == 1 ? " file" : " files");
}

}  // namespace

std::string asJson(const BatchResult& result) {
    const Json report = Json::parse(result.report, nullptr, false);
    const bool has_failed = result.outcome == BatchOutcome::Failed;
    return lineOf({{"result", nameOf(result.outcome)},
                   {"input", result.input},
                   {"output", result.output},
                   {"exit_code", result.exit_code},
                   {"damaged", result.is_damaged},
                   {"error", has_failed ? Json(result.error) : Json(nullptr)},
                   {"seconds", result.seconds},
                   {"report", report.is_object() ? report : Json(nullptr)}});
}

std::string asJson(const BatchReport& report) {
    return lineOf({{"result", "summary"},
                   {"rendered", report.rendered},
                   {"skipped", report.skipped},
                   {"failed", report.failures.size()},
                   {"damaged", report.damaged.size()},
                   {"not_begun", report.not_begun},
                   {"seconds", report.seconds}});
}

std::string errorLine(const BatchResult& result) {
    return result.input + ": " + result.error;
}

std::string asText(const BatchReport& report) {
    std::string text = "rendered  " + files(report.rendered) + " in " + clockTime(report.seconds) + "\n";
    if (report.skipped > 0) text += "skipped   " + files(report.skipped) + ", finished before\n";
    if (report.not_begun > 0) text += "open      " + files(report.not_begun) + "\n";
    if (!report.damaged.empty()) {
        text += "damaged   " + files(report.damaged.size()) + ", rendered all the same\n";
        for (const BatchResult& result : report.damaged) text += "  " + errorLine(result) + "\n";
    }
    if (!report.failures.empty()) {
        text += "failed    " + files(report.failures.size()) + "\n";
        for (const BatchResult& result : report.failures) {
            text += "  " + errorLine(result) + " (exit code " + std::to_string(result.exit_code) + ")\n";
        }
    }
    return text;
}

}  // namespace sonivex_tool
