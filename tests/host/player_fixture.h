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

/** A Player around a scripted filter; the parameter of a test says whether the filter is active. */
class PlayerFixture : public testing::TestWithParam<bool> {
  protected:
    PlayerFixture() : prototype_("fake", script_) {}

    static bool isActive() { return GetParam(); }

    std::unique_ptr<Player> makePlayer(bool active, std::chrono::milliseconds stall_limit = kGenerousLimit);
    std::unique_ptr<Player> makePlayer() { return makePlayer(isActive()); }

    /** Push one frame with the next number. @return what the player answered. */
    int pushFrame(Player& player, const IQFFrame::audioInfo& info = kStereo48k);
    void pushFrames(Player& player, int count, const IQFFrame::audioInfo& info = kStereo48k);

    static constexpr std::chrono::milliseconds kGenerousLimit{20'000};

    const std::shared_ptr<Script> script_ = std::make_shared<Script>();
    std::vector<int> numbers_out_;  // of the frames that the player handed to its output

  private:
    FakeFilter prototype_;
    int next_number_ = 0;
};

inline std::string activity(const testing::TestParamInfo<bool>& info) {
    return info.param ? "Active" : "Inactive";
}

/** 0, 1, … count - 1. */
std::vector<int> firstNumbers(int count);

}  // namespace Vorlin::test
