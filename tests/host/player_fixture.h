#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <vector>

#include "fake_filter.h"
#include "vorlin/player.h"

namespace Vorlin::test {

constexpr IQFFrame::audioInfo STEREO_48K{.format = 1,  // s16
                                         .channels = 2,
                                         .sample_rate = 48000,
                                         .nb_samples = 1024,
                                         .channel_layout = 3};

/** A Player around a scripted filter; the parameter of a test says whether the filter is active. */
class PlayerFixture : public testing::TestWithParam<bool> {
  protected:
    PlayerFixture() : mPrototype("fake", script) {}

    static bool isActive() { return GetParam(); }

    std::unique_ptr<Player> makePlayer(bool active, std::chrono::milliseconds stallLimit = GENEROUS_LIMIT);
    std::unique_ptr<Player> makePlayer() { return makePlayer(isActive()); }

    /** Push one frame with the next number. @return what the player answered. */
    int pushFrame(Player& player, const IQFFrame::audioInfo& info = STEREO_48K);
    void pushFrames(Player& player, int count, const IQFFrame::audioInfo& info = STEREO_48K);

    static constexpr std::chrono::milliseconds GENEROUS_LIMIT{20'000};

    const std::shared_ptr<Script> script = std::make_shared<Script>();
    std::vector<int> numbersOut;  ///< of the frames that the player handed to its output

  private:
    FakeFilter mPrototype;
    int mNextNumber = 0;
};

inline std::string activity(const testing::TestParamInfo<bool>& info) {
    return info.param ? "Active" : "Inactive";
}

/** 0, 1, … count - 1. */
std::vector<int> firstNumbers(int count);

}  // namespace Vorlin::test
