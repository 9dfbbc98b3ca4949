#include "levels.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#include "audio_spec.h"
#include "effect_runs.h"

namespace study {

sonivex_tool::LevelReport levelsOf(const test::Pcm& pcm, int channels) {
    sonivex_tool::AudioSpec spec;
    spec.format = AV_SAMPLE_FMT_S16;
    spec.rate_hz = kRate_hz;
    spec.layout = sonivex_tool::defaultLayout(channels);
    const auto frames = static_cast<int>(pcm.size() / static_cast<std::size_t>(channels));
    const sonivex_tool::FramePtr frame = sonivex_tool::makeFrame(spec, frames);
    std::memcpy(frame->extended_data[0], pcm.data(), pcm.size() * sizeof(pcm[0]));
    sonivex_tool::LevelMeter meter(spec);
    meter.add(*frame);
    return meter.result();
}

double loudness_lufs(const test::Pcm& pcm, int channels) {
    const auto lufs = levelsOf(pcm, channels).all.integrated_lufs;
    if (!lufs) throw std::runtime_error("cannot measure the loudness of a signal below -70 LUFS");
    return *lufs;
}

}  // namespace study
