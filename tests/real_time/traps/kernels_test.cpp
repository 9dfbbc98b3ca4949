// Traps the kernels inside surround, which are its reverb and its scalar definition, and the timing of all
// effects.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "IRAgent.h"
#include "audiofft.h"
#include "convolve_reverb.h"
#include "effect_timing.h"
#include "layouts.h"
#include "real_time/traps/real_time_section.h"
#include "support/signals/signals.h"

namespace {

using test::RealTimeSection;

using ReverbOperation = int (ConvolveReverb::*)(const float*, float*, int);

TEST(KernelTraps, NoOperationOfTheReverbIsTrapped) {
    constexpr ReverbOperation kOperations[] = {
        &ConvolveReverb::process_Kelvo_Bingo_2,      &ConvolveReverb::process_Kelvo_Bingo_5_1,
        &ConvolveReverb::process_Kelvo_Bingo_7_1,    &ConvolveReverb::process_Kelvo_Surround_2,
        &ConvolveReverb::process_Kelvo_Surround_5_1, &ConvolveReverb::process_Kelvo_Surround_7_1,
        &ConvolveReverb::process_kelvo_audio_};
    const std::vector<float> in = test::noiseFloats(1, 8 * 2 * 300);
    std::vector<float> out(2 * 2 * 300);
    for (const sonivex::Layout* const layout :
         {&sonivex::kBingo2, &sonivex::kBingo51, &sonivex::kBingo71, &sonivex::kSurround2,
          &sonivex::kSurround51, &sonivex::kSurround71, &sonivex::kAudio}) {
        ConvolveReverb reverb;
        reverb.prepare(*layout, layout->width, 240, 1);
        const RealTimeSection section;
        for (const int frames : {240, 1, 100, 241, 300, 0, -1}) {
            for (const ReverbOperation operation : kOperations)
                (reverb.*operation)(in.data(), out.data(), frames);
            reverb.process(*layout, in.data(), out.data(), frames, 2);
            reverb.reset();
        }
    }
}

TEST(KernelTraps, TheScalarDefinitionIsNotTrapped) {
    constexpr std::size_t kLength = 512;
    const std::vector<float> response = test::noiseFloats(2, 20000);
    const std::vector<float> in = test::noiseFloats(3, 3000);
    std::vector<float> out(in.size());
    audiofft::AudioFFT transform;
    transform.init(kLength);
    const std::size_t bins = audiofft::AudioFFT::ComplexSize(kLength);
    std::vector<float> re(bins);
    std::vector<float> im(bins);
    IRAgent agent;
    ASSERT_TRUE(agent.init(256, 4096, response.data(), response.size()));
    {
        const RealTimeSection section;
        transform.fft(in.data(), re.data(), im.data());
        transform.ifft(out.data(), re.data(), im.data());
        for (const int length : {256, 1, 100, 3000, 3000, 3000, 0})
            agent.process(in.data(), out.data(), length);
    }
    EXPECT_NE(out.front(), 0.0F);
}

TEST(KernelTraps, TheTimingOfTheEffectsIsNotTrapped) {
    std::int64_t delay_frames = 0;
    {
        const RealTimeSection section;
        for (const sonivex::EffectTiming& timing :
             {sonivex::surroundTiming(true, 8), sonivex::surroundTiming(false, 1),
              sonivex::dialogueTiming(192000), sonivex::normalizerTiming()}) {
            for (const int call : {1, 240, 512, 1024, 8192})
                delay_frames += sonivex::delayInCalls_frames(timing, call).value_or(0);
        }
    }
    EXPECT_GT(delay_frames, 0);
}

}  // namespace
