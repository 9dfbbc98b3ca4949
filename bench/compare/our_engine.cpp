#include "our_engine.h"

#include <stdexcept>

#include "sonivex/surround.h"
#include "unit_scale.h"

namespace compare {
namespace {

constexpr std::size_t kCall_frames = 240;

struct Release {
    void operator()(void* handle) const { aem_ReleaseSurround(handle); }
};

class OurEngine : public Engine {
  public:
    OurEngine(const Layout& layout, const Material& material)
        : Engine("Sonivex"),
          material_(material),
          out_(2 * kCall_frames),
          handle_(aem_CreateSurround(static_cast<int>(layout.channels()), static_cast<int>(kRate_hz),
                                     layout.type, kMode, 1)) {
        if (handle_ == nullptr) throw std::runtime_error("aem_CreateSurround failed");
    }

    std::size_t callFrames() const override { return kCall_frames; }

    void process(std::size_t first_frame) override {
        aem_ProcessSurround(handle_.get(), material_.pcm.data() + first_frame * material_.channels,
                            out_.data(), kCall_frames);
    }

    void appendOutput(Ears& ears) override {
        Ears samples(out_.size());
        sonivex::int16ToUnitScale(out_.data(), static_cast<int>(out_.size()), samples.data());
        ears.insert(ears.end(), samples.begin(), samples.end());
    }

    bool isLimitedPcm() const override { return true; }

  private:
    const Material& material_;
    std::vector<short> out_;
    std::unique_ptr<void, Release> handle_;
};

}  // namespace

std::unique_ptr<Engine> makeOurEngine(const Layout& layout, const Material& material) {
    return std::make_unique<OurEngine>(layout, material);
}

}  // namespace compare
