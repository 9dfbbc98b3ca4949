// Changes of type, room and limiter while sound plays: without a click, with and without a worker.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "plugins/lv2/lv2_host.h"

namespace {

using test::FakeLv2Worker;
using test::Lv2Plugin;
using test::Lv2Settings;
using test::Planes;
using Manner = test::FakeLv2Worker::Manner;

constexpr double kMostSpike_db = 3.0;
constexpr std::size_t kBlock = 128;
// Longer than the longest tail of the responses, the latency and a fade together.
constexpr std::size_t kChange_frames = 24000;

const auto& kKind = test::kSurround51;

void set(Lv2Plugin& plugin, const Lv2Settings& settings) {
    plugin.control(test::kType) = static_cast<float>(settings.type);
    plugin.control(test::kMode) = static_cast<float>(settings.mode);
    plugin.control(test::kLimiter) = static_cast<float>(settings.limiter);
}

// Runs a plug-in over a sound, in steps.
class Playing {
  public:
    explicit Playing(const Planes& in, FakeLv2Worker* worker = nullptr, const test::Lv2Kind& kind = kKind)
        : plugin(kind, 48000, worker), in_(in), out_(2, std::vector<float>(in[0].size())) {}

    // Plays up to a frame.
    void until(std::size_t end) {
        while (at_ < end) {
            const std::size_t block = std::min(kBlock, end - at_);
            plugin.run(in_, out_, at_, block);
            at_ += block;
        }
    }
    Planes finish() {
        until(in_[0].size());
        return out_;
    }

    Lv2Plugin plugin;

  private:
    const Planes& in_;
    Planes out_;
    std::size_t at_ = 0;
};

// An engine that began elsewhere cuts the sound into other blocks, and so rounds a few samples to the other
// side.
constexpr float kStep = 1.0F / 32768.0F;

bool areEqualFrom(std::size_t first, const Planes& a, const Planes& b) {
    for (std::size_t channel = 0; channel < 2; ++channel) {
        for (std::size_t i = first; i < a[channel].size(); ++i) {
            if (std::abs(a[channel][i] - b[channel][i]) > kStep) return false;
        }
    }
    return true;
}

bool areEqualUntil(std::size_t last, const Planes& a, const Planes& b) {
    const auto offset = static_cast<std::ptrdiff_t>(last);
    return std::equal(a[0].begin(), a[0].begin() + offset, b[0].begin()) &&
           std::equal(a[1].begin(), a[1].begin() + offset, b[1].begin());
}

TEST(Lv2Swap, AChangeOnASteadyToneDoesNotClick) {
    constexpr std::size_t kAt = 30000;
    const std::pair<Lv2Settings, Lv2Settings> changes[] = {
        {{.type = 1}, {.type = 13, .mode = 3}},
        {{.type = 13, .mode = 2}, {.type = 1}},
        {{.type = 13, .mode = 1}, {.type = 13, .mode = 3}},
        {{.type = 1, .limiter = 1}, {.type = 1, .limiter = 0}},
    };
    double worst_db = -100.0;
    for (const auto& kind : {test::kSurroundStereo, test::kSurround51, test::kSurround71}) {
        for (const auto& [before, after] : changes) {
            for (const bool has_worker : {false, true}) {
                SCOPED_TRACE(std::string(kind.uri) + " from " + std::to_string(before.type) + " to " +
                             std::to_string(after.type) + (has_worker ? " with a worker" : ""));
                const Planes in = test::tonePlanes(kind.channels_in, kAt + 2 * kChange_frames, 0.1);
                FakeLv2Worker worker(Manner::kQueued);
                Playing playing(in, has_worker ? &worker : nullptr, kind);
                set(playing.plugin, before);
                playing.until(100);
                worker.workAll();
                playing.until(kAt);
                set(playing.plugin, after);
                playing.until(kAt + 500);
                worker.workAll();
                const Planes out = playing.finish();
                const double steady =
                    std::max(test::secondDifference(out, kAt - 4800, kAt),
                             test::secondDifference(out, kAt + kChange_frames, in[0].size()));
                const double spike =
                    20.0 * std::log10(test::secondDifference(out, kAt - 10, in[0].size()) / steady);
                EXPECT_LE(spike, kMostSpike_db);
                worst_db = std::max(worst_db, spike);
            }
        }
    }
    RecordProperty("worst_spike_db", std::to_string(worst_db));
}

TEST(Lv2Swap, AfterAChangeTheSoundIsThatOfTheNewSettings) {
    constexpr std::size_t kAt = 20000;
    const Planes in = test::noisePlanes(40, 6, kAt + 2 * kChange_frames);
    for (const Lv2Settings& after : {Lv2Settings{.type = 13, .mode = 1}, Lv2Settings{.type = 13, .mode = 3},
                                     Lv2Settings{.limiter = 0}}) {
        Playing playing(in);
        playing.until(kAt);
        set(playing.plugin, after);
        const Planes out = playing.finish();
        EXPECT_TRUE(areEqualUntil(kAt, out, effectOutput(kKind, {}, in, 240)));
        EXPECT_TRUE(areEqualFrom(kAt + kChange_frames, out, effectOutput(kKind, after, in, 240)));
    }
}

TEST(Lv2Swap, AWorkerThatAnswersLateLeavesTheOldSettingsUntilThen) {
    constexpr std::size_t kAt = 10000;
    constexpr std::size_t kAnswer = 40000;
    const Planes in = test::noisePlanes(41, 6, kAnswer + 2 * kChange_frames);
    FakeLv2Worker worker(Manner::kQueued);
    Playing playing(in, &worker);
    playing.until(kAt);
    set(playing.plugin, {.type = 13});
    playing.until(kAnswer);
    EXPECT_EQ(worker.waiting(), 1U);
    worker.workAll();
    const Planes out = playing.finish();
    EXPECT_TRUE(areEqualUntil(kAnswer, out, effectOutput(kKind, {}, in, 240)));
    EXPECT_TRUE(areEqualFrom(kAnswer + kChange_frames, out, effectOutput(kKind, {.type = 13}, in, 240)));
    EXPECT_EQ(worker.waiting(), 1U) << "the old engine waits for its release";
    worker.workAll();
}

TEST(Lv2Swap, AWorkerThatAnswersAtOnceActsFromTheFirstFrame) {
    const Planes in = test::noisePlanes(42, 6, 20000);
    FakeLv2Worker worker(Manner::kImmediate);
    Playing playing(in, &worker);
    set(playing.plugin, {.type = 13, .mode = 2});
    EXPECT_TRUE(playing.finish() == effectOutput(kKind, {.type = 13, .mode = 2}, in, 240));
}

TEST(Lv2Swap, TheNewestRequestWins) {
    constexpr std::size_t kAt = 10000;
    const Planes in = test::noisePlanes(43, 6, kAt + 4 * kChange_frames);
    const Planes expected = effectOutput(kKind, {.type = 13, .mode = 3}, in, 240);
    // While the worker works, while the new engine listens, and while both sound.
    for (const std::size_t pause : {128U, 5000U, 13500U, 14500U}) {
        for (const bool is_immediate : {false, true}) {
            FakeLv2Worker worker(is_immediate ? Manner::kImmediate : Manner::kQueued);
            Playing playing(in, &worker);
            playing.until(kAt);
            for (const int mode : {1, 2, 3}) {
                set(playing.plugin, {.type = 13, .mode = mode});
                playing.until(kAt + static_cast<std::size_t>(mode) * pause);
                worker.workAll();
            }
            for (std::size_t at = kAt + 3 * pause; at < in[0].size(); at += 1000) {
                playing.until(at);
                worker.workAll();
            }
            EXPECT_TRUE(areEqualFrom(in[0].size() - 1000, playing.finish(), expected)) << "pause " << pause;
        }
    }
}

TEST(Lv2Swap, ARequestThatIsTakenBackChangesNothing) {
    constexpr std::size_t kAt = 10000;
    const Planes in = test::noisePlanes(44, 6, kAt + 2 * kChange_frames);
    for (const bool works_before : {false, true}) {
        FakeLv2Worker worker(Manner::kQueued);
        Playing playing(in, &worker);
        playing.until(kAt);
        set(playing.plugin, {.type = 13});
        playing.until(kAt + 1000);
        if (works_before) worker.workAll();
        playing.until(kAt + 2000);
        set(playing.plugin, {});
        playing.until(kAt + 3000);
        worker.workAll();
        EXPECT_TRUE(playing.finish() == effectOutput(kKind, {}, in, 240));
        worker.workAll();
    }
}

TEST(Lv2Swap, AWorkerWithoutRoomIsAskedAgain) {
    const Planes in = test::noisePlanes(45, 6, 10000 + 2 * kChange_frames);
    FakeLv2Worker worker(Manner::kRefuses);
    Playing playing(in, &worker);
    set(playing.plugin, {.type = 13});
    playing.until(10000);
    EXPECT_GT(worker.refusals(), 10);
    worker.become(Manner::kImmediate);
    playing.until(10000 + kBlock);
    worker.become(Manner::kRefuses);  // of the release, too
    const Planes out = playing.finish();
    EXPECT_TRUE(areEqualUntil(10000, out, effectOutput(kKind, {}, in, 240)));
    EXPECT_TRUE(areEqualFrom(10000 + kChange_frames, out, effectOutput(kKind, {.type = 13}, in, 240)));
}

// The leak checker tells if an engine is lost.
TEST(Lv2Swap, NoEngineIsLostWhenTheHostLosesMessagesOrEndsInBetween) {
    const Planes in = test::noisePlanes(46, 6, 60000);
    for (const std::size_t end : {5000U, 6000U, 20000U, 21000U, 60000U}) {
        for (const bool works : {false, true}) {
            FakeLv2Worker worker(Manner::kQueued);
            Playing playing(in, &worker);
            playing.until(4000);
            set(playing.plugin, {.type = 13});
            playing.until(5000);
            if (works) worker.workAll();
            playing.until(end);
            worker.dropAll();
        }
    }
}

TEST(Lv2Swap, AChangeThatIsUnderWayIsCompleteAfterAnotherStart) {
    constexpr std::size_t kAt = 10000;
    const Planes in = test::noisePlanes(47, 6, 60000);
    for (const std::size_t pause : {200U, 5000U, 14000U}) {
        FakeLv2Worker worker(Manner::kQueued);
        Lv2Plugin plugin(kKind, 48000, &worker);
        Planes out(2, std::vector<float>(in[0].size()));
        plugin.run(in, out, 0, kAt);
        set(plugin, {.type = 13});
        plugin.run(in, out, kAt, 100);
        worker.workAll();
        plugin.run(in, out, kAt + 100, pause);
        plugin.restart();
        EXPECT_TRUE(plugin.process(in) == effectOutput(kKind, {.type = 13}, in, 240)) << pause;
        worker.workAll();
    }
}

TEST(Lv2Swap, AMessageThatIsNotThePlugInsIsRefused) {
    const LV2_Descriptor* const descriptor = test::findLv2Descriptor(kKind.uri);
    const auto* const worker =
        static_cast<const LV2_Worker_Interface*>(descriptor->extension_data(LV2_WORKER__interface));
    const LV2_Handle instance = descriptor->instantiate(descriptor, 48000.0, nullptr, nullptr);
    const int number = 7;
    EXPECT_EQ(worker->work(instance, nullptr, nullptr, 0, nullptr), LV2_WORKER_ERR_UNKNOWN);
    EXPECT_EQ(worker->work(instance, nullptr, nullptr, sizeof number, &number), LV2_WORKER_ERR_UNKNOWN);
    const std::vector<std::uint8_t> as_long_as_a_message(16, 0xFF);
    EXPECT_EQ(worker->work(instance, nullptr, nullptr, 16, as_long_as_a_message.data()),
              LV2_WORKER_ERR_UNKNOWN);
    EXPECT_EQ(worker->work_response(instance, sizeof number, &number), LV2_WORKER_SUCCESS);
    descriptor->cleanup(instance);
}

TEST(Lv2Swap, TheRoomOf3DSurroundDoesNotMatter) {
    const Planes in = test::noisePlanes(48, 6, 20000);
    FakeLv2Worker worker(Manner::kQueued);
    Playing playing(in, &worker);
    playing.until(1000);
    set(playing.plugin, {.type = 1, .mode = 3});
    playing.finish();
    EXPECT_EQ(worker.waiting(), 0U);
}

}  // namespace
