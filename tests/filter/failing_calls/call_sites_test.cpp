// Makes every call of the FFmpeg libraries fail that the filter makes and that can fail. The table names all
// places in the filter's sources and in av_compat.h that call these libraries, so a new one needs a line
// here.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <tuple>

#include "filter/faults/failing_calls.h"
#include "filter/faults/filter_under_test.h"
#include "frame_checks.h"
#include "support/frames/frame_matchers.h"
#include "support/logs/host_log_capture.h"

namespace test {
namespace {

using Vorlin::IQFFrame;

/** A function that a source file calls. */
struct CallSites {
    const char* file;
    const char* function;
    int sites;
};

constexpr CallSites kCanFail[] = {
    {"av_compat.h", "av_channel_layout_copy", 1},
    {"frame_properties.cpp", "av_frame_alloc", 1},
    {"frame_properties.cpp", "av_frame_copy_props", 2},
    {"input_graph.cpp", "av_buffersink_get_frame", 1},
    {"input_graph.cpp", "av_buffersrc_add_frame", 1},
    {"input_graph.cpp", "av_channel_layout_describe", 1},
    {"input_graph.cpp", "av_channel_layout_from_mask", 1},
    {"input_graph.cpp", "av_opt_set", 2},
    {"input_graph.cpp", "av_opt_set_int", 1},
    {"input_graph.cpp", "av_opt_set_q", 1},
    {"input_graph.cpp", "avfilter_get_by_name", 2},
    {"input_graph.cpp", "avfilter_graph_alloc", 1},
    {"input_graph.cpp", "avfilter_graph_alloc_filter", 2},
    {"input_graph.cpp", "avfilter_graph_config", 1},
    {"input_graph.cpp", "avfilter_init_str", 2},
    {"input_graph.cpp", "avfilter_link", 2},
    {"output_graph.cpp", "av_buffer_alloc", 1},
    {"output_graph.cpp", "av_buffersink_get_frame", 1},
    {"output_graph.cpp", "av_buffersrc_add_frame", 1},
    {"output_graph.cpp", "av_frame_alloc", 2},
    {"output_graph.cpp", "av_frame_get_buffer", 1},
    {"output_graph.cpp", "avfilter_get_by_name", 3},
    {"output_graph.cpp", "avfilter_graph_alloc", 1},
    {"output_graph.cpp", "avfilter_graph_config", 1},
    {"output_graph.cpp", "avfilter_graph_create_filter", 3},
    {"output_graph.cpp", "avfilter_link", 2},
};

constexpr CallSites kCannotFail[] = {
    {"SonivexFilter.cpp", "avfilter_register_all", 1},
    {"av_compat.h", "av_channel_layout_default", 2},
    {"av_compat.h", "av_channel_layout_uninit", 2},
    {"av_compat.h", "avfilter_register_all", 1},
    {"frame_checks.cpp", "av_buffer_is_writable", 1},
    {"frame_checks.cpp", "av_frame_get_plane_buffer", 1},  // a question; the filter obeys the answer
    {"frame_checks.cpp", "av_get_bytes_per_sample", 1},
    {"frame_checks.cpp", "av_sample_fmt_is_planar", 1},
    {"frame_properties.cpp", "av_dict_free", 1},
    {"frame_properties.cpp", "av_frame_remove_side_data", 1},
    {"input_graph.cpp", "av_channel_layout_default", 1},
    {"input_graph.cpp", "av_channel_layout_uninit", 2},
    {"input_graph.cpp", "av_frame_unref", 1},
    {"input_graph.cpp", "avfilter_free", 1},
    {"input_graph.cpp", "avfilter_graph_free", 1},
    {"output_graph.cpp", "av_buffer_unref", 2},
    {"output_graph.cpp", "avfilter_graph_free", 1},
};

using SitesByName = std::map<std::pair<std::string, std::string>, int>;

SitesByName sitesInTheTable() {
    SitesByName sites;
    for (const CallSites& site : kCanFail) sites[{site.file, site.function}] = site.sites;
    for (const CallSites& site : kCannotFail) sites[{site.file, site.function}] = site.sites;
    return sites;
}

void addSitesIn(const std::filesystem::path& source, SitesByName& sites) {
    static const std::regex call(R"(\b((?:av|avfilter|sws|swr)_[a-z_0-9]+)\()");
    std::ifstream file(source);
    for (std::string line; std::getline(file, line);) {
        line.resize(std::min(line.find("//"), line.size()));
        for (std::sregex_iterator found(line.begin(), line.end(), call), end; found != end; ++found) {
            ++sites[{source.filename().string(), (*found)[1].str()}];
        }
    }
}

SitesByName sitesInTheSources() {
    SitesByName sites;
    addSitesIn(SONIVEX_AV_COMPAT, sites);
    for (const auto& entry : std::filesystem::recursive_directory_iterator(SONIVEX_FILTER_SOURCES)) {
        const auto extension = entry.path().extension();
        if (extension == ".cpp" || extension == ".h") addSitesIn(entry.path(), sites);
    }
    return sites;
}

TEST(FilterCallSites, AreAllInTheTable) {
    const auto known = sitesInTheTable();
    const auto found = sitesInTheSources();
    for (const auto& [name, sites] : found) {
        EXPECT_EQ(known.contains(name) ? known.at(name) : 0, sites) << name.first << " calls " << name.second;
    }
    for (const auto& [name, sites] : known) {
        EXPECT_TRUE(found.contains(name)) << name.first << " does not call " << name.second << " any more";
    }
}

/** A stream whose first frame takes the filter through its calls. */
struct Way {
    const char* name = "";
    const char* options = "";
    FrameSpec spec;
    /** Calls while the first frame passes. A function that is called in more places than the filter's sources
     *  is called in av_compat.h as well. */
    std::map<std::string, int> calls;
};

Way throughBothGraphs() {
    Way way;
    way.name = "ThroughBothGraphs";
    way.options = R"({"enable_normalizer": true})";
    way.spec.format = AV_SAMPLE_FMT_FLTP;
    way.spec.frames = 512;
    way.calls = {{"av_frame_alloc", 3},
                 {"av_frame_copy_props", 2},
                 {"av_buffersink_get_frame", 2},
                 {"av_buffersrc_add_frame", 2},
                 {"av_channel_layout_copy", 3},
                 {"av_channel_layout_describe", 1},
                 {"av_channel_layout_from_mask", 2},
                 {"av_opt_set", 2},
                 {"av_opt_set_int", 1},
                 {"av_opt_set_q", 1},
                 {"avfilter_get_by_name", 6},
                 {"avfilter_graph_alloc", 2},
                 {"avfilter_graph_alloc_filter", 3},
                 {"avfilter_graph_config", 2},
                 {"avfilter_init_str", 3},
                 {"avfilter_link", 4},
                 {"av_frame_get_buffer", 1},
                 {"avfilter_graph_create_filter", 3}};
    return way;
}

Way withFewerChannelsComingOut() {
    Way way;
    way.name = "WithFewerChannelsComingOut";
    way.options = R"({"enable_surround": true})";
    way.spec.channels = 6;
    way.spec.frames = 480;
    way.calls = {{"av_buffer_alloc", 1}};
    return way;
}

std::vector<Way> allWays() {
    return {throughBothGraphs(), withFewerChannelsComingOut()};
}

class FilterFailingCalls : public testing::TestWithParam<Way> {
  protected:
    static std::unique_ptr<FilterUnderTest> start() {
        auto filter = std::make_unique<FilterUnderTest>();
        filter->options(GetParam().options);
        (*filter)->setInvalid(false);
        return filter;
    }

    static std::unique_ptr<IQFFrame> frameOf(uint32_t number) {
        auto frame = makeFrame(GetParam().spec, noiseSource(number, 3000));
        static_cast<AVFrame*>(*frame)->pts = 4711;
        return frame;
    }

    static std::unique_ptr<IQFFrame> pass(FilterUnderTest& filter, FailingCalls& calls) {
        auto frame = frameOf(1);
        return calls.during([&] { return filter.pass(std::move(frame)); });
    }

    static void expectWhole(const std::unique_ptr<IQFFrame>& out) {
        ASSERT_TRUE(frameMatchesDescription(out->getInfo(), avFrameOf(out)));
        EXPECT_EQ(avFrameOf(out)->pts, 4711);
    }
};

INSTANTIATE_TEST_SUITE_P(Ways, FilterFailingCalls, testing::ValuesIn(allWays()),
                         [](const auto& parameter) { return std::string(parameter.param.name); });

TEST_P(FilterFailingCalls, AreReached) {
    FailingCalls calls;
    const auto filter = start();
    ASSERT_NE(pass(*filter, calls), nullptr);
    for (const auto& [function, count] : GetParam().calls)
        EXPECT_EQ(calls.calls(function), count) << function;
}

TEST(FilterFailingCallsTable, HasEveryFunctionThatCanFail) {
    std::set<std::string> reached;
    for (const Way& way : allWays()) {
        for (const auto& [function, calls] : way.calls) reached.insert(function);
    }
    for (const CallSites& site : kCanFail) {
        EXPECT_TRUE(reached.contains(site.function)) << site.function;
        const auto& functions = FailingCalls::functions();
        EXPECT_EQ(std::count(functions.begin(), functions.end(), site.function), 1) << site.function;
    }
}

TEST_P(FilterFailingCalls, CostAtMostTheFrameAtHand) {
    const auto fresh = start();
    const auto sound_of_first = samplesOf(avFrameOf(fresh->pass(frameOf(1))));
    for (const std::string& function : FailingCalls::functions()) {
        for (int number = 1;; ++number) {
            SCOPED_TRACE(function + ", call " + std::to_string(number));
            HostLogCapture log;
            FailingCalls calls(function, number);
            const auto filter = start();
            const auto lines = log.lines().size();
            const auto out = pass(*filter, calls);
            if (calls.calls(function) < number) break;
            if (out == nullptr) {
                EXPECT_GT(log.lines().size(), lines) << "a lost frame must be logged";
            } else {
                expectWhole(out);
                EXPECT_TRUE(holdsSamples(avFrameOf(out), sound_of_first));
            }
            const auto next = filter->pass(frameOf(2));
            ASSERT_NE(next, nullptr);
            expectWhole(next);
            EXPECT_EQ(avFrameOf(next)->format, GetParam().spec.format);
            (*filter)->flush();
            const auto again = filter->pass(frameOf(1));
            ASSERT_NE(again, nullptr);
            EXPECT_EQ(avFrameOf(again)->format, GetParam().spec.format);
            EXPECT_TRUE(holdsSamples(avFrameOf(again), sound_of_first));
        }
    }
}

}  // namespace
}  // namespace test
