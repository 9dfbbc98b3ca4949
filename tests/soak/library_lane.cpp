#include <vector>

#include "random_host/promise.h"
#include "soak/lanes.h"
#include "sonivex/effect.h"
#include "support/signals/signals.h"

namespace test {

namespace {

struct EffectDeleter {
    void operator()(SonivexEffect* effect) const { sonivex_release(effect); }
};
using OwnedEffect = std::unique_ptr<SonivexEffect, EffectDeleter>;

class LibraryLane final : public Lane {
  public:
    explicit LibraryLane(std::uint64_t seed)
        : random_(seed),
          sound_(noiseFloats(seed, kMostChannels * SONIVEX_MAX_CALL_FRAMES)),
          out_(sound_.size()) {
        makeEveryEffect();
        kept_ = makeRandomEffect();
        ++counts_.filters;
    }

    void play(double audio_s) override {
        target_s_ += audio_s;
        while (counts_.audio_s < target_s_) {
            const OwnedEffect effect = makeRandomEffect();
            ++counts_.filters;
            stream(*effect);
            stream(*kept_);
        }
        sonivex_reset(kept_.get());
    }

    HostCounts counts() const override { return counts_; }

  private:
    static constexpr int kRate_hz = 48000;
    static constexpr int kMostChannels = 8;
    static constexpr int kMostBlocks = 400;

    struct Kind {
        int effect;
        int channels;
        int type;
        int mode;
    };
    static constexpr int kThreeD = 1;
    static constexpr int kMegaBass = 13;

    static OwnedEffect makeEffect(const Kind& kind, double voice_level) {
        SonivexEffect* effect = nullptr;
        int status = SONIVEX_OK;
        if (kind.effect == SONIVEX_SURROUND) {
            constexpr int kLimits = 1;
            status = sonivex_create_surround(&effect, kind.channels, kRate_hz, kind.type, kind.mode, kLimits);
        } else if (kind.effect == SONIVEX_DIALOGUE) {
            status = sonivex_create_dialogue(&effect, kRate_hz, voice_level);
        } else {
            status = sonivex_create_normalizer(&effect, kind.channels, kRate_hz);
        }
        promise(status == SONIVEX_OK && effect != nullptr, "an effect can be made");
        return OwnedEffect(effect);
    }

    OwnedEffect makeRandomEffect() {
        constexpr int kChannels[] = {2, 2, 6, 8};
        return makeEffect({.effect = random_.between(SONIVEX_SURROUND, SONIVEX_NORMALIZER),
                           .channels = kChannels[random_.between(0, 3)],
                           .type = random_.between(0, 1) == 0 ? kThreeD : kMegaBass,
                           .mode = random_.between(1, 3)},
                          random_.between(1, 4));
    }

    // The first use of some tables allocates for the rest of the program.
    static void makeEveryEffect() {
        for (const int channels : {2, 6, 8}) {
            for (const int mode : {1, 2, 3}) {
                makeEffect({SONIVEX_SURROUND, channels, kThreeD, mode}, 1);
                makeEffect({SONIVEX_SURROUND, channels, kMegaBass, mode}, 1);
            }
            makeEffect({SONIVEX_NORMALIZER, channels, kThreeD, 1}, 1);
        }
        makeEffect({SONIVEX_DIALOGUE, 2, kThreeD, 1}, 1);
    }

    void stream(SonivexEffect& effect) {
        const auto planes = [](std::vector<float>& samples) {
            std::vector<float*> starts;
            for (std::size_t i = 0; i < kMostChannels; ++i) {
                starts.push_back(samples.data() + i * SONIVEX_MAX_CALL_FRAMES);
            }
            return starts;
        };
        const std::vector<float*> in = planes(sound_);
        const std::vector<float*> out = planes(out_);
        for (int left = random_.between(1, kMostBlocks); left > 0; --left) {
            const int frames = random_.between(1, SONIVEX_MAX_CALL_FRAMES);
            promise(sonivex_stream_float(&effect, in.data(), out.data(), frames) == SONIVEX_OK,
                    "an effect takes blocks of any length");
            ++counts_.pushed;
            ++counts_.pulled;
            ++counts_.processed;
            counts_.audio_s += static_cast<double>(frames) / kRate_hz;
            if (random_.between(0, 99) == 0) sonivex_reset(&effect);
        }
    }

    Random random_;
    std::vector<float> sound_;
    std::vector<float> out_;
    OwnedEffect kept_;
    HostCounts counts_;
    double target_s_ = 0;
};

}  // namespace

std::unique_ptr<Lane> makeLibraryLane(std::uint64_t seed) {
    return std::make_unique<LibraryLane>(seed);
}

}  // namespace test
