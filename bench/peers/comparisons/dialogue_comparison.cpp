#include "comparisons.h"

#if __has_include("sonivex/dialoguenhance.h")

extern "C" {
#include <libavutil/mem.h>
#include <libavutil/tx.h>
}

#include <memory>
#include <stdexcept>

#include "material.h"
#include "sonivex/dialoguenhance.h"
#include "turns.h"

namespace compare {
namespace {

constexpr int kPoints = 2048;  // transform length at 48 kHz
constexpr std::size_t kHop_frames = kPoints / 4;
constexpr std::size_t kChannels = 2;

struct Release {
    void operator()(void* handle) const { aem_ReleaseDialoguEnhance(handle); }
};

// A libavutil real transform that owns its input and output.
class Transform {
  public:
    explicit Transform(bool is_inverse) : in_(makeArray()), out_(makeArray()) {
        const float scale = is_inverse ? 1.0F / kPoints : 1.0F;
        if (av_tx_init(&context_, &run_, AV_TX_FLOAT_RDFT, is_inverse ? 1 : 0, kPoints, &scale, 0) < 0) {
            throw std::runtime_error("av_tx_init failed");
        }
        stride_ = is_inverse ? sizeof(AVComplexFloat) : sizeof(float);
        for (int i = 0; i < kPoints; ++i) in_[i] = static_cast<float>(i % 7) - 3;
    }
    Transform(const Transform&) = delete;
    Transform& operator=(const Transform&) = delete;
    ~Transform() { av_tx_uninit(&context_); }

    void run() { run_(context_, out_.get(), in_.get(), static_cast<std::ptrdiff_t>(stride_)); }

  private:
    struct Free {
        void operator()(float* memory) const { av_free(memory); }
    };
    using Array = std::unique_ptr<float[], Free>;
    static Array makeArray() {
        auto* const memory = static_cast<float*>(av_mallocz((kPoints + 2) * sizeof(float)));
        if (memory == nullptr) throw std::bad_alloc();
        return Array(memory);
    }

    Array in_;
    Array out_;
    AVTXContext* context_ = nullptr;
    av_tx_fn run_ = nullptr;
    std::size_t stride_ = 0;
};

}  // namespace

void compareDialogue(Report& report, const Effort& effort) {
    const Material material =
        makeMaterial(kChannels, kChannels, effort.material_steps * kMaterialStep_frames, 8);
    const std::unique_ptr<void, Release> handle(
        aem_CreateDialoguEnhance(static_cast<int>(kChannels), static_cast<int>(kRate_hz), 1, 1, 1));
    if (handle == nullptr) throw std::runtime_error("aem_CreateDialoguEnhance failed");
    std::vector<short> out(kHop_frames * kChannels);
    const auto enhance = [&] {
        for (std::size_t frame = 0; frame < material.frames(); frame += kHop_frames) {
            aem_ProcessDialoguEnhance(handle.get(), material.pcm.data() + frame * kChannels, out.data(),
                                      static_cast<int>(kHop_frames), static_cast<int>(kRate_hz));
        }
    };
    Transform forward_left(false);
    Transform forward_right(false);
    Transform inverse_left(true);
    Transform inverse_right(true);
    const auto transform = [&] {
        for (std::size_t frame = 0; frame < material.frames(); frame += kHop_frames) {
            for (Transform* const one : {&forward_left, &forward_right, &inverse_left, &inverse_right})
                one->run();
        }
    };
    const double audio_s = static_cast<double>(material.frames()) / kRate_hz;
    const std::vector<Timing> timings = takeTurns(
        {{"Sonivex dialogue", enhance, audio_s}, {"its four transforms", transform, audio_s}}, effort.turns);

    report.section("Dialogue enhancement: processor time per hop of 512 frames");
    constexpr double kUsPerHop = 1e3 * kHop_frames / kRate_hz;  // from ms per second of audio
    for (const Timing& timing : timings) {
        report.row(timing.name, "stereo", median(timing.cpu_ms_per_s) * kUsPerHop, "us");
    }
    report.row("whole hop / its four transforms", "stereo", medianRatio(timings[0], timings[1]), "",
               atMost(1.9, 1.6));
}

}  // namespace compare

#else

namespace compare {

void compareDialogue(Report& report, const Effort&) {
    report.note("dialogue enhancement: not measured, this library has none");
}

}  // namespace compare

#endif
