#include "report_page.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <regex>

#include "page_assets.h"
#include "tools/sonivex/audio_samples.h"

namespace {

using sonivex_tool::filled;
using sonivex_tool::GuardEvent;
using sonivex_tool::jsonForScript;
using sonivex_tool::MeasuredReport;
using sonivex_tool::MeasuredVersion;
using sonivex_tool::pageOf;
using sonivex_tool::picturesOf;
using testing::HasSubstr;
using testing::Not;

MeasuredVersion version(const std::string& title) {
    MeasuredVersion measured;
    measured.title = measured.file_name = title;
    measured.spec = test::floatSpec(2);
    measured.frames = 48000;
    measured.opus = "not really Opus";
    return measured;
}

MeasuredReport reportOf(const std::string& path) {
    MeasuredReport report;
    report.input = path;
    report.source.codec = "flac";
    report.versions = {version("original"), version("normalizer")};
    report.versions[1].choice = "normalizer";
    report.sound.length_s = 1.0;
    report.has_sound = true;
    return report;
}

std::string pageOf(const MeasuredReport& report) {
    return pageOf(report, picturesOf(report));
}

TEST(Templates, ReplaceEachNameOnceAndLeaveTheTextsAlone) {
    EXPECT_EQ(filled("a@X@b@Y@c", {{"X", "1@Y@"}, {"Y", "2"}}), "a1@Y@b2c");
    EXPECT_EQ(filled("mail@", {}), "mail@");
    EXPECT_THROW(filled("@Z@", {{"X", "1"}}), std::out_of_range);
}

TEST(JsonInAScript, CannotEndTheScript) {
    const std::string json = jsonForScript(nlohmann::json("</script><!--").dump());
    EXPECT_THAT(json, Not(HasSubstr("<")));
    EXPECT_EQ(nlohmann::json::parse(json), "</script><!--");
}

TEST(Pages, TakeNothingFromAFileNameAsMarkup) {
    MeasuredReport report = reportOf("folder/<img src=x onerror=alert(1)>&\"'.flac");
    report.notes = {"<script>alert(2)</script>"};
    report.versions[1].conversions = {"<b>bold</b>"};
    const std::string page = pageOf(report);
    EXPECT_THAT(page, Not(HasSubstr("<img")));
    EXPECT_THAT(page, Not(HasSubstr("<script>alert")));
    EXPECT_THAT(page, Not(HasSubstr("<b>")));
    EXPECT_THAT(page, HasSubstr("&lt;img src=x onerror=alert(1)&gt;&amp;&quot;&#39;.flac"));
}

TEST(Pages, AreUtf8WhateverTheFilesName) {
    const std::string page = pageOf(reportOf("f/\xff\xfe \xc3.flac"));
    EXPECT_THAT(page, HasSubstr("<h1>\xEF\xBF\xBD\xEF\xBF\xBD \xEF\xBF\xBD.flac</h1>"));
    EXPECT_NO_THROW((void)nlohmann::json(page).dump());  // throws for text that is not UTF-8
}

// A regular expression would take a frame of the stack for each character of the scripts.
std::string withoutScripts(std::string page) {
    const std::string end = "</script>";
    for (std::size_t at = page.find("<script"); at != std::string::npos; at = page.find("<script", at)) {
        page.erase(at, page.find(end, at) + end.size() - at);
    }
    return page;
}

// A page that refers to nothing outside works from a file and without a network.
TEST(Pages, ReferToNothingOutside) {
    const std::string page = pageOf(reportOf("a.flac"));
    const std::regex reference(R"re((src|href|action|data|srcset|poster)\s*=\s*["']?(?!data:)[^"'\s>])re");
    EXPECT_FALSE(std::regex_search(withoutScripts(page), reference));
    EXPECT_THAT(page, Not(HasSubstr("http:")));
    EXPECT_THAT(page, Not(HasSubstr("https:")));
    EXPECT_THAT(page, Not(HasSubstr("@import")));
    EXPECT_THAT(page, HasSubstr("default-src 'none'"));
}

TEST(Pages, SayWhyTheyHaveNoPlayers) {
    MeasuredReport report = reportOf("a.flac");
    report.has_sound = false;
    report.why_silent = "The players are left out, because this build of FFmpeg has no encoder of Opus.";
    const std::string page = pageOf(report);
    EXPECT_THAT(page, HasSubstr("has no encoder of Opus."));
    EXPECT_THAT(page, Not(HasSubstr("id=\"sound-0\"")));
    EXPECT_THAT(page, Not(HasSubstr("id=\"player\"")));
}

TEST(Pages, ListTheEventsOfTheLoadGuard) {
    MeasuredReport report = reportOf("a.flac");
    EXPECT_THAT(pageOf(report), HasSubstr("The load guard has reported nothing."));
    report.versions[1].guard_events = {{65.0, true}, {70.0, false}};
    const std::string page = pageOf(report);
    EXPECT_THAT(page, HasSubstr("1:05 normalizer: the filter passes the sound through"));
    EXPECT_THAT(page, HasSubstr("1:10 normalizer: the filter processes again"));
}

TEST(Pages, ShowMissingFiguresAsDashes) {
    const std::string page = pageOf(reportOf("a.flac"));
    EXPECT_THAT(page, HasSubstr("no measurable loudness"));
    EXPECT_THAT(page, Not(HasSubstr("nan")));
    EXPECT_THAT(page, Not(HasSubstr(">inf")));
}

}  // namespace
