#include "audio_stage.h"

#include <cmath>
#include <cstddef>

#include "biquad.h"
#include "constants.h"
#include "exact_math.h"
#include "finish.h"
#include "late_tail.h"
#include "response_formats.h"

namespace sonivex_irgen {
namespace {

constexpr double kAudioRate_hz = sonivex::kAudioFormat.rate_hz;
constexpr std::size_t kSamples = sonivex::kAudioFormat.samples;
constexpr std::uint64_t kSeed = 9001;
constexpr double kReverberationTime_s = 0.12;
constexpr double kMixing_s = 0.006;
constexpr double kTail_db = -28.0;  // energy, relative to the unit sample

constexpr FilterPoint kTailBassCut{200.0, kButterworthQ, kAudioRate_hz};
constexpr FilterPoint kTailShelf{3000.0, kButterworthQ, kAudioRate_hz};
constexpr double kTailShelf_db = -6.0;
constexpr FilterPoint kBass{110.0, 0.7, kAudioRate_hz};
constexpr double kBass_db = 4.5;
constexpr FilterPoint kWarmth{300.0, 0.8, kAudioRate_hz};
constexpr double kWarmth_db = -1.0;
constexpr FilterPoint kAir{12500.0, kButterworthQ, kAudioRate_hz};
constexpr double kAir_db = 2.0;
constexpr FinishPlan kFinish{.bass_shelf_db = 0.0,
                             .high_pass_hz = 15.0,
                             .faded_part = sonivex::kAudioFormat.faded_part,
                             .rate_hz = kAudioRate_hz};

std::vector<double> faintTail() {
    TailDecay decay{};
    decay.reverberation_times_s.fill(kReverberationTime_s);
    decay.mixing_s = kMixing_s;
    std::vector<double> tail = monoTail(kSeed, decay, kSamples, kAudioRate_hz);
    applyFilter(highPass(kTailBassCut), tail);
    applyFilter(highShelf(kTailShelf, kTailShelf_db), tail);
    double energy = 0.0;
    for (const double sample : tail) energy += sample * sample;
    const double gain = std::sqrt(dbToPower(kTail_db) / energy);
    for (double& sample : tail) sample *= gain;
    return tail;
}

}  // namespace

std::vector<double> audioStageResponse() {
    std::vector<double> response = faintTail();
    response[static_cast<std::size_t>(kOrigin_samples)] += 1.0;
    applyFilter(lowShelf(kBass, kBass_db), response);
    applyFilter(peak(kWarmth, kWarmth_db), response);
    applyFilter(highShelf(kAir, kAir_db), response);
    finishResponse(kFinish, response);
    return response;
}

}  // namespace sonivex_irgen
