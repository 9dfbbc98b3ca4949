#include "engines.h"

#include <stdexcept>

#include "sonivex/surround.h"
#include "unit_scale.h"

namespace compare {
namespace {

struct Release {
    void operator()(void* handle) const { aem_ReleaseSurround(handle); }
};

class OurEngine : public Engine {
  public:
    OurEngine(const Layout& layout, const Material& material, std::size_t call_frames)
        : Engine("Sonivex, calls of " + std::to_string(call_frames)),
          call_frames_(call_frames),
          material_(material),
          out_(2 * call_frames),
          handle_(aem_CreateSurround(static_cast<int>(layout.channels()), static_cast<int>(kRate_hz),
                                     layout.type, kMode, 1)) {
        if (handle_ == nullptr) throw std::runtime_error("aem_CreateSurround failed");
    }

    std::size_t callFrames() const override { return call_frames_; }

    void process(std::size_t first_frame) override {
        aem_ProcessSurround(handle_.get(), material_.pcm.data() + first_frame * material_.channels,
                            out_.data(), static_cast<int>(call_frames_));
    }

    void appendOutput(Ears& ears) override {
        Ears samples(out_.size());
        sonivex::int16ToUnitScale(out_.data(), static_cast<int>(out_.size()), samples.data());
        ears.insert(ears.end(), samples.begin(), samples.end());
    }

    // The library serves a call in full or with silence: an incomplete block silences the whole first call.
    std::size_t delay_frames() const override {
        return call_frames_ % kShortCall_frames == 0 ? 0 : call_frames_;
    }

    bool isLimitedPcm() const override { return true; }

  private:
    std::size_t call_frames_;
    const Material& material_;
    std::vector<short> out_;
    std::unique_ptr<void, Release> handle_;
};

}  // namespace

std::unique_ptr<Engine> makeOurEngine(const Layout& layout, const Material& material,
                                      std::size_t call_frames) {
    return std::make_unique<OurEngine>(layout, material, call_frames);
}

}  // namespace compare
