// Hosts call connect_port and run on their audio threads: neither allocates, locks or calls the system.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "plugins/lv2/lv2_host.h"
#include "real_time/traps/real_time_section.h"

namespace {

using test::FakeLv2Worker;
using test::kBypass;
using test::Lv2Effect;
using test::Lv2Kind;
using test::Lv2Plugin;
using test::Planes;
using test::RealTimeSection;

constexpr std::size_t kFrames = 24000;
constexpr std::array<std::size_t, 6> kBlocks_frames = {512, 1, 100, 0, 4000, 256};

// A plug-in with its sound.
class TrappedPlugin {
  public:
    explicit TrappedPlugin(const Lv2Kind& kind, FakeLv2Worker* worker = nullptr)
        : plugin_(kind, 48000, worker),
          in_(test::noisePlanes(1, kind.channels_in, kFrames)),
          out_(kind.channels_out, std::vector<float>(kFrames)) {}

    Lv2Plugin& operator*() { return plugin_; }
    Lv2Plugin* operator->() { return &plugin_; }

    // Connects and runs through the sound from its beginning, in a section.
    void run() {
        const RealTimeSection section;
        std::size_t first = 0;
        for (std::size_t i = 0; first < kFrames; ++i) {
            const std::size_t frames = std::min(kBlocks_frames[i % kBlocks_frames.size()], kFrames - first);
            plugin_.run(in_, out_, first, frames);
            first += frames;
        }
    }

    float peak() const {
        float peak = 0.0F;
        for (const auto& plane : out_) {
            for (const float sample : plane) peak = std::max(peak, std::abs(sample));
        }
        return peak;
    }

  private:
    Lv2Plugin plugin_;
    Planes in_;
    Planes out_;
};

TEST(Lv2Traps, NoPlugInIsTrapped) {
    for (const Lv2Kind& kind : test::kLv2Kinds) {
        SCOPED_TRACE(kind.uri);
        TrappedPlugin plugin(kind);
        plugin.run();
        EXPECT_GT(plugin.peak(), 0.01F);
        for (const float bypass : {1.0F, 0.0F}) {
            plugin->control(kBypass) = bypass;
            plugin.run();
        }
    }
}

TEST(Lv2Traps, AChangeOfTheVoiceLevelIsNotTrapped) {
    TrappedPlugin plugin(test::kDialogue);
    for (const float voice : {1.0F, 3.5F, 1000.0F, -1.0F, std::numeric_limits<float>::quiet_NaN()}) {
        plugin->control(test::kVoice) = voice;
        plugin.run();
    }
    EXPECT_GT(plugin.peak(), 0.01F);
}

TEST(Lv2Traps, AnUnconnectedPortIsNotTrapped) {
    for (const Lv2Kind& kind : test::kLv2Kinds) {
        SCOPED_TRACE(kind.uri);
        TrappedPlugin plugin(kind);
        const RealTimeSection section;
        for (std::size_t port = 0; port < kind.channels_in + kind.channels_out + 7; ++port)
            plugin->connect(port, nullptr);
        plugin->run(1000);
    }
}

// Goes through every change of settings while the worker does its work between the runs.
void changeSettings(const Lv2Kind& kind, FakeLv2Worker::Manner manner) {
    FakeLv2Worker worker(manner);
    TrappedPlugin plugin(kind, &worker);
    plugin.run();
    for (const float type : {13.0F, 1.0F}) {
        for (const float mode : {3.0F, 2.0F}) {
            for (const float limiter : {0.0F, 1.0F}) {
                plugin->control(test::kType) = type;
                plugin->control(test::kMode) = mode;
                plugin->control(test::kLimiter) = limiter;
                plugin.run();
                worker.workAll();
                plugin.run();
            }
        }
    }
    EXPECT_EQ(worker.refusals() > 0, manner == FakeLv2Worker::Manner::kRefuses);
    EXPECT_GT(plugin.peak(), 0.01F);
}

TEST(Lv2Traps, ChangesOfSurroundAreNotTrappedInAHostWithAWorker) {
    for (const Lv2Kind& kind : {test::kSurroundStereo, test::kSurround51, test::kSurround71}) {
        SCOPED_TRACE(kind.uri);
        changeSettings(kind, FakeLv2Worker::Manner::kQueued);
        changeSettings(kind, FakeLv2Worker::Manner::kRefuses);
    }
}

// The guide names this exception.
TEST(Lv2Traps, AChangeOfSurroundIsTrappedInAHostWithoutAWorker) {
    const auto change = [] {
        TrappedPlugin plugin(test::kSurround51);
        plugin->control(test::kType) = 13;
        plugin.run();
        _exit(0);
    };
    EXPECT_EXIT(change(), testing::ExitedWithCode(test::kTrapExitCode), "Real-time violation");
}

}  // namespace
