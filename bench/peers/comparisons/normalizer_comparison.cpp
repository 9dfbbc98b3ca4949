#include "comparisons.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <stdexcept>

#include "audio_graph.h"
#include "machine.h"
#include "material.h"
#include "models/normalizer_model.h"
#include "sonivex/normalizer.h"
#include "support/signals/recorded_speech.h"
#include "support/signals/signals.h"
#include "turns.h"

namespace compare {
namespace {

constexpr std::size_t kCall_frames = 1024;
constexpr std::size_t kChannels = 2;
constexpr double kCeiling_lin = 0.99;

struct Programme {
    std::string name;
    test::Pcm pcm;    // stereo
    double gain_lin;  // gain for alimiter: the one at which the normalizer settles
};

test::Pcm withPeak(const std::vector<double>& samples, double peak_dbfs) {
    double peak = 0;
    for (const double sample : samples) peak = std::max(peak, std::abs(sample));
    const double gain = std::pow(10.0, peak_dbfs / 20) * 32768 / peak;
    test::Pcm pcm;
    for (const double sample : samples) pcm.push_back(static_cast<std::int16_t>(std::lround(sample * gain)));
    return pcm;
}

std::vector<double> speech(std::size_t frames) {
    const test::Pcm recorded = test::recordedSpeech(static_cast<int>(kChannels));
    const test::Pcm floor = test::noise(1, static_cast<int>(frames * kChannels), 30);
    std::vector<double> samples;
    for (std::size_t i = 0; i < frames * kChannels; ++i) {
        samples.push_back(static_cast<double>(recorded[i % recorded.size()]) + floor[i]);
    }
    return samples;
}

// Plucked chords that decay, slightly detuned between the sides, and a burst of noise on each beat.
std::vector<double> music(std::size_t frames) {
    constexpr double kChord_hz[] = {110, 220, 277.2, 329.6, 440, 554.4, 880};
    constexpr std::size_t kBeat_frames = 12000;
    const test::Pcm hiss = test::noise(2, static_cast<int>(frames * kChannels), 8000);
    std::vector<double> samples;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        const double since_beat_s = static_cast<double>(frame % kBeat_frames) / kRate_hz;
        const double time_s = static_cast<double>(frame) / kRate_hz;
        for (std::size_t side = 0; side < kChannels; ++side) {
            double sample = hiss[frame * kChannels + side] / 32768.0 * std::exp(-40 * since_beat_s);
            for (const double note_hz : kChord_hz) {
                const double detuned_hz = note_hz * (1 + 0.001 * static_cast<double>(side));
                sample +=
                    0.3 * std::sin(2 * std::numbers::pi * detuned_hz * time_s) * std::exp(-3 * since_beat_s);
            }
            samples.push_back(sample);
        }
    }
    return samples;
}

class OurNormalizer {
  public:
    explicit OurNormalizer(const test::Pcm& pcm) : pcm_(pcm), out_(kCall_frames * kChannels) {
        const QuietStandardOutput quiet;
        handle_ = aem_CreateNormalizer(static_cast<int>(kChannels), static_cast<int>(kRate_hz));
        if (handle_ == nullptr) throw std::runtime_error("aem_CreateNormalizer failed");
    }
    OurNormalizer(const OurNormalizer&) = delete;
    OurNormalizer& operator=(const OurNormalizer&) = delete;
    ~OurNormalizer() { aem_ReleaseNormalizer(handle_); }

    void pass() {
        for (std::size_t i = 0; i < pcm_.size(); i += out_.size()) call(i);
    }

    // Compares a fresh normalizer with its model, bit by bit.
    void check() {
        model::Normalizer model(kChannels);
        for (std::size_t i = 0; i < pcm_.size(); i += out_.size()) {
            call(i);
            const auto first = pcm_.begin() + static_cast<std::ptrdiff_t>(i);
            if (model.process({first, first + static_cast<std::ptrdiff_t>(out_.size())}) != out_) {
                throw std::runtime_error("the normalizer's output differs from its model's");
            }
        }
    }

  private:
    void call(std::size_t first_sample) {
        aem_ProcessNormalizer(handle_, pcm_.data() + first_sample, out_.data(), kCall_frames, kChannels);
    }

    const test::Pcm& pcm_;
    test::Pcm out_;
    void* handle_ = nullptr;
};

class Alimiter {
  public:
    // @param format      of input and output: double is alimiter's own, 16-bit the normalizer's
    // @param before      filters in front of alimiter, in libavfilter's notation; behind: likewise
    // @param conversions number of filters that convert to double and back
    Alimiter(const Programme& programme, AVSampleFormat format, const std::string& before,
             const std::string& behind, unsigned conversions)
        : programme_(programme),
          graph_({{"in", {format, "stereo"}}},
                 "[in]" + before +
                     "alimiter=level=false:attack=5:release=50:limit=" + std::to_string(kCeiling_lin) +
                     ":level_in=" + std::to_string(programme.gain_lin) + behind + "[out]",
                 1 + conversions) {
        std::vector<float> samples;
        for (const std::int16_t sample : programme.pcm)
            samples.push_back(static_cast<float>(sample) / 32768.0F);
        for (std::size_t i = 0; i < samples.size(); i += kCall_frames * kChannels) {
            frames_.push_back(makeFrame({format, "stereo"}, samples.data() + i, kCall_frames));
        }
    }

    void pass() {
        for (const Frame& frame : frames_) {
            graph_.push(0, frame.get());
            while (graph_.pull() != nullptr) {
            }
        }
    }

    // For double only: the output never exceeds the ceiling, and it is the delayed input where no peak is
    // limited.
    void check() {
        std::vector<double> out;
        for (const Frame& frame : frames_) {
            graph_.push(0, frame.get());
            while (const AVFrame* const block = graph_.pull()) {
                const auto* const samples = reinterpret_cast<const double*>(block->extended_data[0]);
                out.insert(out.end(), samples,
                           samples + static_cast<std::size_t>(block->nb_samples) * kChannels);
            }
        }
        for (const double sample : out) {
            if (!(std::abs(sample) <= kCeiling_lin + 1e-9))
                throw std::runtime_error("alimiter exceeded its limit");
        }
        constexpr std::size_t kLookAheadSamples = 239 * kChannels;  // 5 ms, including the current frame
        double power = 0;
        double deviation_power = 0;
        for (std::size_t i = kLookAheadSamples; i < out.size(); ++i) {
            const double in = programme_.pcm[i - kLookAheadSamples] / 32768.0 * programme_.gain_lin;
            power += in * in;
            deviation_power += (in - out[i]) * (in - out[i]);
        }
        constexpr double kMaxLimitingChange = 1e-3;  // -30 dB
        if (!(deviation_power <= kMaxLimitingChange * power)) {
            throw std::runtime_error("alimiter's output is not its delayed input");
        }
    }

  private:
    const Programme& programme_;
    AudioGraph graph_;
    std::vector<Frame> frames_;
};

void compareProgramme(Report& report, const Effort& effort, const Programme& programme) {
    OurNormalizer(programme.pcm).check();
    Alimiter(programme, AV_SAMPLE_FMT_DBL, "", "", 0).check();

    OurNormalizer ours(programme.pcm);
    Alimiter in_double(programme, AV_SAMPLE_FMT_DBL, "", "", 0);
    Alimiter in_s16(programme, AV_SAMPLE_FMT_S16, "aformat=dbl,", ",aformat=s16", 4);
    const double audio_s = static_cast<double>(programme.pcm.size()) / kChannels / kRate_hz;
    const std::vector<Timing> timings =
        takeTurns({{"Sonivex normalizer", [&] { ours.pass(); }, audio_s},
                   {"FFmpeg alimiter", [&] { in_double.pass(); }, audio_s},
                   {"FFmpeg alimiter from and to s16", [&] { in_s16.pass(); }, audio_s}},
                  effort.turns);
    for (const Timing& timing : timings) {
        report.row(timing.name, programme.name, median(timing.cpu_ms_per_s), "ms");
    }
    report.row("FFmpeg alimiter / Sonivex normalizer", programme.name, medianRatio(timings[1], timings[0]),
               "", atLeast(2.0, 6.0));
    report.row("the same, from and to s16", programme.name, medianRatio(timings[2], timings[0]), "");
}

}  // namespace

void compareNormalizer(Report& report, const Effort& effort) {
    report.section("Normalizer, stereo: processor time per second of audio; outputs checked");
    const std::size_t frames = effort.material_steps * kMaterialStep_frames;
    compareProgramme(report, effort, {"speech -20 dB", withPeak(speech(frames), -20), 10});
    compareProgramme(report, effort, {"music -1 dB", withPeak(music(frames), -1), 1});
}

}  // namespace compare
