#pragma once

#include <ebur128.h>

#include <memory>
#include <optional>

#include "format_converter.h"

namespace sonivex_tool {

/** A file's loudness; what cannot be said is missing. */
struct Loudness {
    std::optional<double> integratedLufs;  ///< missing when nothing rises above the gate of -70 LUFS
    std::optional<double> samplePeakDbfs;  ///< missing for digital silence
};

/** Measures integrated loudness (EBU R128) and sample peak of frames of one spec. */
class LoudnessMeter {
  public:
    /** @throw std::bad_alloc, here and below */
    explicit LoudnessMeter(const AudioSpec& spec);
    ~LoudnessMeter();

    void add(const AVFrame& frame);
    Loudness result() const;

  private:
    struct Closer {
        void operator()(ebur128_state* state) const;
    };

    FormatConverter mToDouble;
    std::unique_ptr<ebur128_state, Closer> mState;
};

}  // namespace sonivex_tool
