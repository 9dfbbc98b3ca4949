// Makes every request for memory fail that a plug-in makes, with its real effect: while the host makes it,
// runs it, changes its settings and ends it. The host gets no plug-in, or one that keeps its settings.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <vector>

#include "failing_calls/sweep.h"
#include "plugin_kinds.h"
#include "plugins/lv2/lv2_fakes.h"
#include "sonivex/effect.h"

namespace test {
namespace {

using sonivex_lv2::PluginKind;

constexpr std::uint32_t kBlock_frames = 512;
constexpr int kBlocksOfSurround = 32;  // longer than the delay, the tail and the fade to new settings
constexpr int kBlocksOfOthers = 10;    // longer than the delay

/** A host's log that needs no memory. */
struct CountingLog {
    int lines = 0;
    LV2_Log_Log log{this, print, vprint};
    LV2_URID_Map map{nullptr, [](LV2_URID_Map_Handle, const char*) -> LV2_URID { return 1; }};

    static int print(LV2_Log_Handle handle, LV2_URID, const char*, ...) {
        return ++static_cast<CountingLog*>(handle)->lines;
    }
    static int vprint(LV2_Log_Handle handle, LV2_URID, const char*, va_list) {
        return ++static_cast<CountingLog*>(handle)->lines;
    }
};

/** A host of one plug-in. */
class Host {
  public:
    Host(const PluginKind& kind, const LV2_Descriptor& descriptor, bool has_worker)
        : kind_(kind), descriptor_(descriptor), has_worker_(has_worker) {
        for (std::size_t i = 0; i < sound_.size(); ++i) {
            sound_[i] = 0.3F * std::sin(static_cast<float>(i) * 0.05F);
        }
    }

    // @return false if the host got no plug-in.
    bool make() {
        const LV2_Feature schedule = {LV2_WORKER__schedule,
                                      const_cast<LV2_Worker_Schedule*>(worker_.schedule())};
        const LV2_Feature log = {LV2_LOG__log, &log_.log};
        const LV2_Feature map = {LV2_URID__map, &log_.map};
        const LV2_Feature* const features[] = {&log, &map, has_worker_ ? &schedule : nullptr, nullptr};
        instance_ = descriptor_.instantiate(&descriptor_, 48000.0, "/", features);
        if (instance_ == nullptr) return false;
        if (descriptor_.extension_data != nullptr) {
            worker_.serve(instance_, static_cast<const LV2_Worker_Interface*>(
                                         descriptor_.extension_data(LV2_WORKER__interface)));
        }
        const auto channels_in = static_cast<std::uint32_t>(kind_.channels_in);
        const auto channels_out = static_cast<std::uint32_t>(kind_.channels_out);
        for (std::uint32_t i = 0; i < channels_in; ++i) {
            descriptor_.connect_port(instance_, i, sound_.data());
        }
        for (std::uint32_t i = 0; i < channels_out; ++i) {
            descriptor_.connect_port(instance_, channels_in + i, out_[i].data());
        }
        descriptor_.connect_port(instance_, channels_in + channels_out + 2, &control_);
        descriptor_.activate(instance_);
        return true;
    }

    // @return true if something came out at the end.
    bool run() {
        const int blocks = kind_.effect == SONIVEX_SURROUND ? kBlocksOfSurround : kBlocksOfOthers;
        for (int i = 0; i < blocks; ++i) descriptor_.run(instance_, kBlock_frames);
        for (const float sample : out_[0]) {
            if (!std::isfinite(sample)) return false;
        }
        return std::abs(out_[0][0]) + std::abs(out_[0][100]) > 0.0F;
    }

    void control(float value) { control_ = value; }

    void end() { descriptor_.cleanup(instance_); }

    int logLines() const { return log_.lines; }

  private:
    const PluginKind& kind_;
    const LV2_Descriptor& descriptor_;
    const bool has_worker_;
    FakeLv2Worker worker_{FakeLv2Worker::Manner::kImmediate};
    CountingLog log_;
    LV2_Handle instance_ = nullptr;
    std::array<float, kBlock_frames> sound_{};
    std::array<std::array<float, kBlock_frames>, 8> out_{};
    float control_ = 1.0F;  // of surround: its type; of dialogue enhancement: its voice level
};

// @return the log lines for settings that were refused.
int liveWith(const PluginKind& kind, const LV2_Descriptor& descriptor, bool has_worker,
             FailingMemory& memory) {
    Host host(kind, descriptor, has_worker);
    const bool is_made = memory.during([&] { return host.make(); });
    if (!is_made) {
        EXPECT_TRUE(memory.hasFailed());
        EXPECT_EQ(host.logLines(), 1);
        EXPECT_EQ(memory.alive(), 0);
        return 0;
    }
    EXPECT_TRUE(memory.during([&] { return host.run(); }));
    int refused = 0;
    for (const float value : {13.0F, 1.0F, 13.0F}) {
        host.control(value);
        const bool had_failed = memory.hasFailed();
        const int lines = host.logLines();
        EXPECT_TRUE(memory.during([&] { return host.run(); })) << "the plug-in fell silent";
        if (memory.hasFailed() && !had_failed) {
            // The C++ library keeps a reserve for exceptions: a request that fails there costs nothing.
            EXPECT_LE(host.logLines(), lines + 1);
            refused += host.logLines() - lines;
        }
    }
    // There is memory again. Settings for which there was none are asked for once more.
    host.control(1.0F);
    EXPECT_TRUE(host.run());
    host.control(13.0F);
    const int lines = host.logLines();
    EXPECT_TRUE(host.run());
    EXPECT_EQ(host.logLines(), lines);
    host.end();
    return refused;
}

TEST(Lv2OutOfMemory, ThePlugInIsRefusedOrGoesOnAsItWas) {
    constexpr int kStride = 29;
    for (const bool has_worker : {false, true}) {
        for (std::uint32_t i = 0; const LV2_Descriptor* descriptor = lv2_descriptor(i); ++i) {
            SCOPED_TRACE(descriptor->URI);
            const PluginKind* const kind = sonivex_lv2::findPluginKind(descriptor->URI);
            ASSERT_NE(kind, nullptr);
            if (has_worker && kind->effect != SONIVEX_SURROUND) continue;  // only surround has work for it
            int refused = 0;
            failEveryRequest(sweepStride(kStride), [&](FailingMemory& memory) {
                refused += liveWith(*kind, *descriptor, has_worker, memory);
            });
            if (kind->effect == SONIVEX_SURROUND) {
                EXPECT_GT(refused, 0) << "no change ran out of memory";
            }
            if (HasFailure()) return;
        }
    }
}

}  // namespace
}  // namespace test
