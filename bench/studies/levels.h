// Loudness and peaks of 16-bit samples, as `sonivex inspect` measures them.
#pragma once

#include "level_meter.h"
#include "support/signals/signals.h"

namespace study {

/** Levels of interleaved samples at 48 kHz in the default layout of the channel count. */
sonivex_tool::LevelReport levelsOf(const test::Pcm& pcm, int channels);

/** Integrated loudness by ITU-R BS.1770. @throw std::runtime_error if nothing exceeds the gate of -70 LUFS */
double loudness_lufs(const test::Pcm& pcm, int channels);

}  // namespace study
