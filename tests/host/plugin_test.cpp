#include "vorlin/plugin.h"

#include <dlfcn.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "vorlin/av_frame.h"
#include "vorlin/filter_prototype.h"
#include "vorlin/player.h"

namespace Vorlin {
namespace {

std::shared_ptr<Plugin> loadOrFail(const char* path) {
    std::string error;
    auto plugin = Plugin::load(path, error);
    EXPECT_TRUE(plugin) << error;
    return plugin;
}

bool isInMemory(const char* path) {
    void* handle = dlopen(path, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) dlclose(handle);
    return handle != nullptr;
}

std::string nameOfNewest(const std::string& supported_name) {
    const auto filter = filterPrototype::createFilter(supported_name, {}, {}, false);
    return filter ? filter->getName() : "none";
}

TEST(HostPlugin, RegistersItsFilterWhileItIsLoaded) {
    EXPECT_FALSE(filterPrototype::isRegistered("echo_a"));
    auto plugin = loadOrFail(ECHO_PLUGIN_A);
    EXPECT_TRUE(filterPrototype::isRegistered("echo_a"));
    plugin.reset();
    EXPECT_FALSE(filterPrototype::isRegistered("echo_a"));
}

TEST(HostPlugin, KeepsItsSymbolsToItself) {
    const auto plugin = loadOrFail(ECHO_PLUGIN_A);
    EXPECT_TRUE(plugin->exports("echo_plugin_name"));
    EXPECT_EQ(dlsym(RTLD_DEFAULT, "echo_plugin_name"), nullptr)
        << "another plug-in with a function of this name would get this one";
}

TEST(HostPlugin, IsUnloadedWithItsLastHolder) {
    auto plugin = loadOrFail(ECHO_PLUGIN_A);
    auto second = loadOrFail(ECHO_PLUGIN_A);
    auto clone = filterPrototype::createFilter("echo_a", {}, {}, false);
    ASSERT_TRUE(clone);
    clone.reset();
    plugin.reset();
    EXPECT_TRUE(isInMemory(ECHO_PLUGIN_A));
    second.reset();
    EXPECT_FALSE(isInMemory(ECHO_PLUGIN_A));
    EXPECT_EQ(nameOfNewest("echo_a"), "none");
}

TEST(HostPlugin, CanBeLoadedAgainAfterUnloading) {
    for (int round = 0; round < 3; ++round) {
        auto plugin = loadOrFail(ECHO_PLUGIN_A);
        EXPECT_EQ(nameOfNewest("echo_a"), "echo_a");
        plugin.reset();
        ASSERT_FALSE(isInMemory(ECHO_PLUGIN_A));
    }
}

TEST(HostPlugin, TheNewestOfTwoPluginsWithTheSameNameAnswers) {
    auto a = loadOrFail(ECHO_PLUGIN_A);
    auto b = loadOrFail(ECHO_PLUGIN_B);
    EXPECT_EQ(nameOfNewest("echo"), "echo_b");
    EXPECT_EQ(nameOfNewest("echo_a"), "echo_a");
    b.reset();
    EXPECT_EQ(nameOfNewest("echo"), "echo_a");
    b = loadOrFail(ECHO_PLUGIN_B);
    a.reset();
    a = loadOrFail(ECHO_PLUGIN_A);
    EXPECT_EQ(nameOfNewest("echo"), "echo_a");
}

TEST(HostPlugin, AllowsDynamicCastsOfItsClonesAcrossTheLibraryBoundary) {
    auto plugin = loadOrFail(ECHO_PLUGIN_A);
    auto clone = filterPrototype::createFilter("echo_a", {}, {}, false);
    ASSERT_TRUE(clone);
    EXPECT_NE(dynamic_cast<filterPrototype*>(clone.get()), nullptr);
    clone.reset();
}

TEST(HostPlugin, StaysLoadedWhileAPlayerHoldsItsFilter) {
    PlayerConfig config;
    config.filter_name = "echo_a";
    config.active = false;
    int frames_out = 0;
    auto player =
        Player::create(loadOrFail(ECHO_PLUGIN_A), config, [&](std::unique_ptr<IQFFrame>) { ++frames_out; });
    ASSERT_TRUE(player);
    EXPECT_TRUE(isInMemory(ECHO_PLUGIN_A));
    EXPECT_EQ(player->push(std::make_unique<AVQFFrame>(nullptr)), 0);
    EXPECT_EQ(frames_out, 1);
    player.reset();
    EXPECT_FALSE(isInMemory(ECHO_PLUGIN_A));
}

TEST(HostPlugin, CanBeUnloadedWhileAnotherThreadSearchesForFilters) {
    auto stays = loadOrFail(ECHO_PLUGIN_B);
    std::atomic<bool> is_done{false};
    std::thread seeker([&] {
        while (!is_done) EXPECT_NE(nameOfNewest("echo_b"), "none");
    });
    for (int round = 0; round < 50; ++round) loadOrFail(ECHO_PLUGIN_A);
    is_done = true;
    seeker.join();
    EXPECT_FALSE(isInMemory(ECHO_PLUGIN_A));
}

TEST(HostPlugin, ReportsItsExportedSymbols) {
    const auto plugin = loadOrFail(ECHO_PLUGIN_A);
    EXPECT_TRUE(plugin->exports("echo_plugin_name"));
    EXPECT_FALSE(plugin->exports("echo_plugin_nothing"));
    EXPECT_EQ(plugin->symbol("echo_plugin_nothing"), nullptr);
    void* const found = plugin->symbol("echo_plugin_name");
    ASSERT_NE(found, nullptr);
    EXPECT_STREQ(reinterpret_cast<const char* (*)()>(found)(), "echo_a");
}

TEST(HostPlugin, ReportsAFailedLoadInOneLine) {
    using std::string_literals::operator""s;
    for (const std::string& path : {"/nowhere/libmissing.so"s, ""s, "/dev/null"s, "lib\0.so"s}) {
        std::string error;
        EXPECT_EQ(Plugin::load(path, error), nullptr);
        EXPECT_FALSE(error.empty()) << path;
        EXPECT_THAT(error, testing::Not(testing::HasSubstr("\n")));
    }
    std::string error;
    Plugin::load("/nowhere/libmissing.so", error);
    EXPECT_THAT(error, testing::HasSubstr("/nowhere/libmissing.so"));
}

}  // namespace
}  // namespace Vorlin
