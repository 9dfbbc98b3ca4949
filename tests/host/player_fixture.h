#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <vector>

#include "fake_filter.h"
#include "vorlin/player.h"

namespace Vorlin::test {

constexpr IQFFrame::audioInfo kStereo48k{.format = 1,  // s16
                                         .channels = 2,
                                         .sample_rate = 48000,
                                         .nb_samples = 1024,
                                         .channel_layout = 3};

/** Runs a Player around a scripted filter. The test parameter is true for an active filter. */
class PlayerFixture : public testing::TestWithParam<bool> {
  protected:
    PlayerFixture() : prototype_("fake", script_) {}

    static bool isActive() { return GetParam(); }

    std::unique_ptr<Player> makePlayer(bool active, std::chrono::milliseconds stall_limit = kGenerousLimit);
    std::unique_ptr<Player> makePlayer() { return makePlayer(isActive()); }

    /** Pushes one frame with the next number. @return the player's result. */
    int pushFrame(Player& player, const IQFFrame::audioInfo& info = kStereo48k);
    /** Pushes `count` frames; fails the test if the player refuses one. */
    void pushFrames(Player& player, int count, const IQFFrame::audioInfo& info = kStereo48k);

    static constexpr std::chrono::milliseconds kGenerousLimit{20'000};

    const std::shared_ptr<Script> script_ = std::make_shared<Script>();
    std::vector<int> numbers_out_;    // numbers of the frames that the player output, in order
    int number_without_memory_ = -1;  // number of the frame for which the output has no memory; -1: none

  private:
    FakeFilter prototype_;
    int next_number_ = 0;
};

/** Names the instances of a test with an active and an inactive filter. */
inline std::string activity(const testing::TestParamInfo<bool>& info) {
    return info.param ? "Active" : "Inactive";
}

/** Returns 0, 1, …, count - 1. */
std::vector<int> firstNumbers(int count);

}  // namespace Vorlin::test
