// Checks the shared library as a player uses it. It registers when loaded and leaves nothing behind when
// unloaded.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include "filter/dump/dump_directory.h"
#include "support/frames/audio_frames.h"
#include "support/signals/signal_matchers.h"
#include "vorlin/filter_prototype.h"
#include "vorlin/player.h"
#include "vorlin/plugin.h"

namespace test {
namespace {

using Vorlin::filterPrototype;
using Vorlin::IQFFrame;
using Vorlin::Player;
using Vorlin::PlayerConfig;
using Vorlin::Plugin;

bool isInMemory() {
    void* handle = dlopen(SONIVEX_PLUGIN, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) dlclose(handle);
    return handle != nullptr;
}

std::shared_ptr<Plugin> load() {
    std::string error;
    auto plugin = Plugin::load(SONIVEX_PLUGIN, error);
    EXPECT_NE(plugin, nullptr) << error;
    return plugin;
}

TEST(SonivexPlugin, RegistersOnLoadAndLeavesNothingBehindOnUnload) {
    for (int round = 0; round < 3; ++round) {
        ASSERT_FALSE(isInMemory());
        EXPECT_FALSE(filterPrototype::isRegistered("sonivex"));
        auto plugin = load();
        EXPECT_TRUE(filterPrototype::isRegistered("sonivex"));
        plugin.reset();
        EXPECT_FALSE(filterPrototype::isRegistered("sonivex"));
        EXPECT_FALSE(isInMemory());
        EXPECT_EQ(filterPrototype::createFilter("sonivex", {}, {}, true), nullptr);
    }
}

TEST(SonivexPlugin, StaysLoadedWhileAPlayerHoldsAClone) {
    auto plugin = load();
    auto player = Player::create(plugin, {}, [](std::unique_ptr<IQFFrame>) {});
    ASSERT_NE(player, nullptr);
    plugin.reset();
    EXPECT_TRUE(isInMemory());
    EXPECT_TRUE(player->setOptions(R"({"enable_normalizer": true})"));
    for (int i = 0; i < 8; ++i)
        EXPECT_EQ(player->push(makeFrame({.format = AV_SAMPLE_FMT_FLTP}, noiseSource(1))), 0);
    EXPECT_EQ(player->drain(), 0);
    EXPECT_EQ(player->counts().pulled, 8u);
    player.reset();
    EXPECT_FALSE(isInMemory()) << "a used filter must not keep its library loaded";
}

TEST(SonivexPlugin, PlaysAlikeActiveAndInactiveAcrossFormatChanges) {
    const auto play = [](bool active) {
        std::vector<std::vector<int16_t>> blocks;
        auto player = Player::create(load(), {.active = active}, [&blocks](std::unique_ptr<IQFFrame> frame) {
            blocks.push_back(samplesOf(avFrameOf(frame)));
        });
        EXPECT_TRUE(player->setOptions(R"({"enable_normalizer": true})"));
        for (uint32_t i = 0; i < 30; ++i) {
            const FrameSpec spec{.format = i < 10 ? AV_SAMPLE_FMT_FLTP : AV_SAMPLE_FMT_S16,
                                 .channels = i < 20 ? 2 : 6};
            EXPECT_EQ(player->push(makeFrame(spec, noiseSource(i, 5000))), 0);
        }
        EXPECT_EQ(player->drain(), 0);
        EXPECT_EQ(player->counts().dropped, 0u);
        EXPECT_EQ(player->counts().flushes, 2u);
        return blocks;
    };
    const auto inactive = play(false);
    ASSERT_EQ(inactive.size(), 30u);
    const auto active = play(true);
    ASSERT_EQ(active.size(), inactive.size());
    for (std::size_t i = 0; i < inactive.size(); ++i) {
        EXPECT_TRUE(sameSignal(active[i], inactive[i], {.channels = i < 20 ? 2 : 6})) << "frame " << i;
    }
}

TEST(SonivexPlugin, ResumesAfterAnExcessiveFrameRate) {
    for (const bool active : {false, true}) {
        uint64_t processed = 0;
        auto player =
            Player::create(load(), {.active = active}, [&processed](std::unique_ptr<IQFFrame> frame) {
                if (samplesOf(avFrameOf(frame))[0] != 100) ++processed;
            });
        player->setOptions(R"({"enable_normalizer": true})");
        const auto push_some = [&player] {
            for (int i = 0; i < 5; ++i) player->push(makeFrame({}, [](int, int) { return int16_t{100}; }));
            EXPECT_EQ(player->drain(), 0);
        };
        player->setVideoFps(25);
        push_some();
        EXPECT_EQ(processed, 5u);
        player->setVideoFps(120);
        EXPECT_TRUE(player->isBypassed());
        push_some();
        EXPECT_EQ(processed, 5u);
        player->setVideoFps(70);
        EXPECT_TRUE(player->isBypassed()) << "70 frames per second still exceed the limit";
        push_some();
        EXPECT_EQ(processed, 5u);
        player->setVideoFps(30);
        EXPECT_FALSE(player->isBypassed());
        push_some();
        EXPECT_EQ(processed, 10u);
        EXPECT_EQ(player->counts().bypassed, 10u);
    }
}

TEST(SonivexPlugin, DumpsToTheFolderInThePlayersProperty) {
    const DumpDirectory directory;
    std::vector<std::vector<int16_t>> played;
    std::vector<int16_t> pushed;
    const PlayerConfig as_it_comes{.call_frames = 0, .corrects_times = false};
    auto player = Player::create(load(), as_it_comes, [&played](std::unique_ptr<IQFFrame> frame) {
        played.push_back(samplesOf(avFrameOf(frame)));
    });
    ASSERT_TRUE(player->setOptions(R"({"enable_dialoguenhance": true, "enable_dump": true})"));
    for (uint32_t i = 0; i < 8; ++i) {
        auto frame = makeFrame({.format = AV_SAMPLE_FMT_FLTP}, noiseSource(i, 5000));
        const auto samples = samplesOf(*frame);
        pushed.insert(pushed.end(), samples.begin(), samples.end());
        EXPECT_EQ(player->push(std::move(frame)), 0);
    }
    EXPECT_EQ(player->drain(), 0);
    player.reset();

    const auto names = directory.names();
    ASSERT_EQ(names.size(), 2u);
    EXPECT_EQ(names[0].find("sonivex_dialoguenhance_input_"), 0u);
    EXPECT_EQ(names[1].find("sonivex_dialoguenhance_output_"), 0u);
    EXPECT_TRUE(sameSignal(samplesInFile(directory.file(names[0])), pushed));
    std::vector<int16_t> heard;
    for (std::size_t i = 0; i < 8; ++i) heard.insert(heard.end(), played[i].begin(), played[i].end());
    EXPECT_TRUE(sameSignal(samplesInFile(directory.file(names[1])), heard));
}

TEST(SonivexPlugin, ExportsItsDocumentedFunctions) {
    const auto plugin = load();
    for (const char* name : {"aem_CreateNormalizer", "aem_ProcessNormalizer", "aem_ReleaseNormalizer",
                             "aem_CreateDialoguEnhance", "aem_ProcessDialoguEnhance",
                             "aem_ReleaseDialoguEnhance", "ZubrelAem_logTrace", "logWrite", "logWriterFun"}) {
        EXPECT_TRUE(plugin->exports(name)) << name;
    }
}

}  // namespace
}  // namespace test
