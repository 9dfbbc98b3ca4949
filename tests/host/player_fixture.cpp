#include "player_fixture.h"

#include <new>
#include <numeric>

namespace Vorlin::test {

std::unique_ptr<Player> PlayerFixture::makePlayer(bool active, std::chrono::milliseconds stall_limit) {
    PlayerConfig config;
    config.filter_name = "fake";
    config.active = active;
    config.source = kStereo48k;
    config.stall_limit = stall_limit;
    return Player::create(nullptr, config, [this](std::unique_ptr<IQFFrame> frame) {
        const auto* numbered = dynamic_cast<const NumberedFrame*>(frame.get());
        ASSERT_NE(numbered, nullptr) << "the player output a frame that the test never pushed";
        numbers_out_.push_back(numbered->number);
        if (numbered->number == number_without_memory_) throw std::bad_alloc();
    });
}

int PlayerFixture::pushFrame(Player& player, const IQFFrame::audioInfo& info) {
    return player.push(std::make_unique<NumberedFrame>(next_number_++, info));
}

void PlayerFixture::pushFrames(Player& player, int count, const IQFFrame::audioInfo& info) {
    for (int i = 0; i < count; ++i) ASSERT_EQ(pushFrame(player, info), 0);
}

std::vector<int> firstNumbers(int count) {
    std::vector<int> numbers(static_cast<size_t>(count));
    std::iota(numbers.begin(), numbers.end(), 0);
    return numbers;
}

}  // namespace Vorlin::test
