// The library behind its public functions: 16-bit PCM in and out, limiter on.
#pragma once

#include "engine.h"
#include "material.h"

namespace compare {

/** One block of the library; calls of this length have no latency. */
inline constexpr std::size_t kShortCall_frames = 240;
/** A frame of many decoders, hence a common call of the filter. Each call completes four or five blocks. */
inline constexpr std::size_t kLongCall_frames = 1024;

/** @param material    must outlive the engine
 *  @param call_frames kShortCall_frames or kLongCall_frames
 *  Throws std::runtime_error if the library creates no handle. */
std::unique_ptr<Engine> makeOurEngine(const Layout& layout, const Material& material,
                                      std::size_t call_frames);

}  // namespace compare
