#pragma once

#include <ebur128.h>

#include <memory>
#include <optional>
#include <string>

#include "format_converter.h"

namespace sonivex_tool {

/** A file's loudness; what cannot be said is missing. */
struct Loudness {
    std::optional<double> integrated_lufs;   // missing when nothing rises above the gate of -70 LUFS
    std::optional<double> sample_peak_dbfs;  // missing for digital silence
};

/** Why loudness and levels of such audio cannot be measured, for the user; empty when they can. */
std::string whyUnmeasurable(const AudioSpec& spec);

/** Measures integrated loudness (EBU R128) and sample peak of frames of one spec. */
class LoudnessMeter {
  public:
    /** @throw Failure (UnsupportedAudio) for what is unmeasurable; std::bad_alloc, here and below */
    explicit LoudnessMeter(const AudioSpec& spec);
    ~LoudnessMeter();

    void add(const AVFrame& frame);
    Loudness result() const;

  private:
    struct Closer {
        void operator()(ebur128_state* state) const;
    };

    FormatConverter to_double_;
    std::unique_ptr<ebur128_state, Closer> state_;
};

}  // namespace sonivex_tool
