#include "report_page.h"

#include <filesystem>

#include "axis.h"
#include "base64.h"
#include "console.h"
#include "element_canvas.h"
#include "page_assets.h"
#include "picture.h"
#include "report_summary.h"
#include "report_tables.h"

namespace sonivex_tool {
namespace {

using sonivex_plotting::base64;
using sonivex_plotting::escapedText;
using sonivex_plotting::fixed;

constexpr std::size_t kMostKeys = 9;

// A path may hold bytes that are no text in UTF-8. The summary's encoder replaces those.
std::string readable(const std::string& text) {
    std::string clean;
    std::size_t at = 0;
    while (at < text.size()) {
        const auto byte = static_cast<unsigned char>(text[at]);
        const std::size_t length = byte < 0x80        ? 1
                                   : byte >> 5U == 6  ? 2
                                   : byte >> 4U == 14 ? 3
                                   : byte >> 3U == 30 ? 4
                                                      : 0;
        bool is_whole = length > 0 && at + length <= text.size();
        for (std::size_t i = 1; is_whole && i < length; ++i)
            is_whole = static_cast<unsigned char>(text[at + i]) >> 6U == 2;
        clean += is_whole ? text.substr(at, length) : "\xEF\xBF\xBD";
        at += is_whole ? length : 1;
    }
    return clean;
}

std::string subtitle(const MeasuredReport& report) {
    const MeasuredVersion& original = report.versions.front();
    return report.source.codec + ", " + std::to_string(original.spec.rate_hz) + " Hz, " +
           layoutName(original.spec.layout) + ", " + clockTime(original.length_s());
}

std::string versionButtons(const MeasuredReport& report) {
    std::string html;
    for (std::size_t i = 0; i < report.versions.size(); ++i) {
        const std::string key = i < kMostKeys ? "<kbd>" + std::to_string(i + 1) + "</kbd> " : "";
        html += "<button type=\"button\" data-version=\"" + std::to_string(i) + "\" aria-pressed=\"false\">" +
                key + escapedText(report.versions[i].title) + "</button>\n";
    }
    return html;
}

std::string versionOptions(const MeasuredReport& report, std::size_t chosen) {
    std::string html;
    for (std::size_t i = 0; i < report.versions.size(); ++i) {
        html += "<option value=\"" + std::to_string(i) + "\"" + (i == chosen ? " selected" : "") + ">" +
                escapedText(report.versions[i].title) + "</option>";
    }
    return html;
}

std::string playerOf(const MeasuredReport& report) {
    if (!report.has_sound) return "<p class=\"explanation\">" + escapedText(report.why_silent) + "</p>\n";
    return "<noscript><p>The players need JavaScript; the pictures and figures do not.</p></noscript>\n"
           "<section id=\"player\" aria-label=\"Players\" hidden>\n<h2>Listen</h2>\n"
           "<div><button type=\"button\" id=\"play\" aria-pressed=\"false\">Play</button>\n"
           "<span id=\"clock\"></span></div>\n"
           "<input type=\"range\" id=\"seek\" min=\"0\" max=\"1\" step=\"0.01\" value=\"0\" "
           "aria-label=\"Position\">\n"
           "<div role=\"group\" aria-label=\"Versions\">\n" +
           versionButtons(report) +
           "</div>\n"
           "<label><input type=\"checkbox\" id=\"matching\" checked> same loudness</label>\n"
           "<label><input type=\"checkbox\" id=\"loop\"> repeat</label>\n"
           "<p id=\"message\" role=\"status\"></p>\n"
           "<fieldset id=\"blind\"><legend>Blind test</legend>\n"
           "<label>A <select id=\"blind-a\">" +
           versionOptions(report, 0) + "</select></label>\n<label>B <select id=\"blind-b\">" +
           versionOptions(report, 1) +
           "</select></label>\n"
           "<button type=\"button\" id=\"blind-toggle\">Begin a blind test</button>\n"
           "<div role=\"group\" aria-label=\"Listen to\">"
           "<button type=\"button\" id=\"hear-a\"><kbd>A</kbd></button>"
           "<button type=\"button\" id=\"hear-b\"><kbd>B</kbd></button>"
           "<button type=\"button\" id=\"hear-x\"><kbd>X</kbd></button>\n"
           "<button type=\"button\" id=\"answer-a\"><kbd>Y</kbd> X is A</button>"
           "<button type=\"button\" id=\"answer-b\"><kbd>N</kbd> X is B</button></div>\n"
           "<p id=\"score\" role=\"status\"></p></fieldset>\n"
           "<p class=\"hint\"><kbd>1</kbd> to <kbd>9</kbd> switch the version, <kbd>space</kbd> plays and "
           "pauses, "
           "<kbd>X</kbd> begins a blind test, <kbd>Esc</kbd> ends it. Opus at " +
           fixed(report.sound.rate_bps / 1000.0, 0) + " kbit/s each.</p>\n</section>\n";
}

std::string notesOf(const MeasuredReport& report) {
    if (report.notes.empty()) return "";
    std::string html = "<ul class=\"notes\">\n";
    for (const std::string& note : report.notes) html += "<li>" + escapedText(readable(note)) + "</li>\n";
    return html + "</ul>\n";
}

std::string picturesHtml(const std::vector<PictureGroup>& groups, const MeasuredReport& report) {
    std::string html;
    for (const PictureGroup& group : groups) {
        html += "<section id=\"" + group.id + "\">\n<h2>" + escapedText(group.heading) +
                "</h2>\n<p class=\"explanation\">" + escapedText(group.explanation) + "</p>\n";
        const bool is_responses = group.id == "responses";
        if (is_responses) html += "<div class=\"pair\">\n";
        for (const ReportPicture& picture : group.pictures) {
            html += "<figure><figcaption>" + escapedText(picture.title) + "</figcaption>\n" +
                    sonivex_plotting::pictureElement(picture.width, picture.height, picture.description,
                                                     picture.draw) +
                    "</figure>\n";
        }
        if (is_responses) html += "</div>\n" + responseTables(report);
        html += "</section>\n";
    }
    return html;
}

std::string soundsOf(const MeasuredReport& report) {
    if (!report.has_sound) return "";
    std::string html;
    for (std::size_t i = 0; i < report.versions.size(); ++i) {
        html += "<script type=\"text/plain\" id=\"sound-" + std::to_string(i) + "\">" +
                base64(report.versions[i].opus) + "</script>\n";
    }
    return html;
}

}  // namespace

std::string jsonForScript(const std::string& json) {
    std::string text;
    for (const char letter : json) {
        if (letter == '<') {
            text += "\\u003c";
        } else {
            text += letter;
        }
    }
    return text;
}

std::string filled(std::string_view page_template, const std::map<std::string, std::string>& texts) {
    std::string page;
    std::size_t at = 0;
    while (at < page_template.size()) {
        const std::size_t from = page_template.find('@', at);
        const std::size_t to =
            from == std::string_view::npos ? std::string_view::npos : page_template.find('@', from + 1);
        if (to == std::string_view::npos) break;
        page += page_template.substr(at, from - at);
        page += texts.at(std::string(page_template.substr(from + 1, to - from - 1)));
        at = to + 1;
    }
    page += page_template.substr(at);
    return page;
}

std::string pageOf(const MeasuredReport& report, const std::vector<PictureGroup>& pictures) {
    const std::string name = readable(std::filesystem::path(report.input).filename().string());
    const std::string body = playerOf(report) + notesOf(report) + summaryTable(report) +
                             picturesHtml(pictures, report) + guardTable(report);
    return filled(
        kPageTemplate,
        {{"TITLE", escapedText(name) + " – Sonivex report"},
         {"STYLE", std::string(kPageStyle)},
         {"FILTERS", sonivex_plotting::heatFilter("heat-light", sonivex_plotting::kHeatInLight) +
                         sonivex_plotting::heatFilter("heat-dark", sonivex_plotting::kHeatInDark)},
         {"HEADING", escapedText(name)},
         {"SUBTITLE", escapedText(subtitle(report))},
         {"BODY", body},
         {"FOOTER", "Made by sonivex " SONIVEX_VERSION ". The figures are also in this page as JSON, in the "
                    "script element with the name summary."},
         {"SUMMARY", jsonForScript(summaryJson(report))},
         {"SOUNDS", soundsOf(report)},
         {"SCRIPT", std::string(kPageScript)}});
}

}  // namespace sonivex_tool
