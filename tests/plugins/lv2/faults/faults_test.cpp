// Memory that runs out, and effects that a build lacks.
#include <gtest/gtest.h>

#include <array>
#include <set>
#include <string>
#include <vector>

#include "fake_effects.h"
#include "plugins/lv2/lv2_fakes.h"
#include "sonivex/effect.h"
#include "support/signals/signals.h"

namespace {

using test::FakeEffects;
using test::fakeEffects;
using test::FakeLv2Worker;

class Lv2Faults : public testing::Test {
  protected:
    Lv2Faults() { fakeEffects() = {}; }
    ~Lv2Faults() override { EXPECT_EQ(fakeEffects().alive, 0); }

    // Makes the plug-in for a host with a log, and with a worker if there is one.
    LV2_Handle make(FakeLv2Worker* worker = nullptr) {
        LV2_Feature schedule = {LV2_WORKER__schedule, nullptr};
        if (worker != nullptr) schedule.data = const_cast<LV2_Worker_Schedule*>(worker->schedule());
        const LV2_Feature log = {LV2_LOG__log, log_.log()};
        const LV2_Feature map = {LV2_URID__map, log_.map()};
        const LV2_Feature* const features[] = {&log, &map, &schedule, nullptr};
        const LV2_Handle instance = descriptor_->instantiate(descriptor_, 48000.0, "/", features);
        if (instance == nullptr) return nullptr;
        if (worker != nullptr) {
            worker->serve(instance, static_cast<const LV2_Worker_Interface*>(
                                        descriptor_->extension_data(LV2_WORKER__interface)));
        }
        descriptor_->connect_port(instance, 2, out_.data());
        descriptor_->connect_port(instance, 6, &type_);
        descriptor_->activate(instance);
        return instance;
    }

    // Runs for a tenth of a second and returns the last sample.
    float run(LV2_Handle instance) {
        for (int i = 0; i < 10; ++i) descriptor_->run(instance, 480);
        return out_[479];
    }

    const LV2_Descriptor* descriptor_ = lv2_descriptor(0);
    test::FakeLv2Log log_;
    std::array<float, 480> out_{};
    float type_ = 1.0F;
};

TEST_F(Lv2Faults, ThePlugInIsRefusedWhenMemoryRunsOut) {
    fakeEffects().next_status = SONIVEX_ERROR_MEMORY;
    EXPECT_EQ(make(), nullptr);
    ASSERT_EQ(log_.lines.size(), 1U);
    EXPECT_NE(log_.lines[0].find("memory ran out"), std::string::npos);
}

TEST_F(Lv2Faults, TheOldEngineGoesOnWhenMemoryForANewOneRunsOut) {
    for (const bool has_worker : {false, true}) {
        fakeEffects() = {};
        log_.lines.clear();
        FakeLv2Worker worker(FakeLv2Worker::Manner::kImmediate);
        type_ = 1.0F;
        const LV2_Handle instance = make(has_worker ? &worker : nullptr);
        EXPECT_EQ(run(instance), 1.0F);
        fakeEffects().next_status = SONIVEX_ERROR_MEMORY;
        type_ = 13.0F;
        EXPECT_EQ(run(instance), 1.0F);
        EXPECT_EQ(log_.lines.size(), 1U) << "one line for each request, not for each block";
        fakeEffects().next_status = SONIVEX_OK;
        EXPECT_EQ(run(instance), 1.0F) << "the request that failed is not made again";
        type_ = 1.0F;
        EXPECT_EQ(run(instance), 1.0F);
        type_ = 13.0F;
        EXPECT_EQ(run(instance), 13.0F) << "but a later one is";
        descriptor_->cleanup(instance);
        EXPECT_EQ(fakeEffects().alive, 0);
    }
}

TEST_F(Lv2Faults, EveryEngineIsReleasedHoweverRequestsAndAnswersFollow) {
    test::Random random(70);
    for (int round = 0; round < 200; ++round) {
        SCOPED_TRACE("seed 70, round " + std::to_string(round));
        FakeLv2Worker worker(FakeLv2Worker::Manner::kQueued);
        const LV2_Handle instance = make(&worker);
        for (int step = 0; step < 60; ++step) {
            const int action = random.between(0, 9);
            if (action < 3) type_ = random.between(0, 1) == 0 ? 1.0F : 13.0F;
            if (action == 3) worker.become(FakeLv2Worker::Manner::kRefuses);
            if (action == 4) worker.become(FakeLv2Worker::Manner::kImmediate);
            if (action == 5) worker.become(FakeLv2Worker::Manner::kQueued);
            if (action == 6) worker.workAll();
            if (action == 7 && random.between(0, 9) == 0) worker.dropAll();
            if (action == 8) descriptor_->activate(instance);
            descriptor_->run(instance, static_cast<std::uint32_t>(random.between(0, 480)));
            // The one that sounds, the next, one that waits for its release and one with the worker.
            EXPECT_LE(fakeEffects().alive, 4);
        }
        if (random.between(0, 1) == 0) worker.workAll();
        descriptor_->cleanup(instance);
        ASSERT_EQ(fakeEffects().alive, 0);
    }
    EXPECT_GT(fakeEffects().made, 400);
}

TEST_F(Lv2Faults, PlugInsOfAnEffectThatTheBuildLacksAreNotListed) {
    fakeEffects().missing_kind = SONIVEX_SURROUND;
    std::set<std::string> uris;
    for (std::uint32_t i = 0; const LV2_Descriptor* descriptor = lv2_descriptor(i); ++i)
        uris.insert(descriptor->URI);
    EXPECT_EQ(uris,
              (std::set<std::string>{"urn:sonivex:lv2:dialogue", "urn:sonivex:lv2:normalizer-stereo",
                                     "urn:sonivex:lv2:normalizer-51", "urn:sonivex:lv2:normalizer-71"}));
}

}  // namespace
