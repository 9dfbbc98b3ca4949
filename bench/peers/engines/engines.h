// Makers of the engines that need no more than a line: the library, its scalar definition, zita-convolver. A
// material must outlive the engine that plays it.
#pragma once

#include <string>

#include "engine.h"
#include "material.h"

namespace compare {

// The library behind its public functions: 16-bit PCM in and out, limiter on.

/** One block of the library; calls of this length have no latency. */
inline constexpr std::size_t kShortCall_frames = 240;
/** Frame length of many decoders, so a common call length. Each call completes four or five blocks. */
inline constexpr std::size_t kLongCall_frames = 1024;

/** @param material    must outlive the engine
 *  @param call_frames kShortCall_frames or kLongCall_frames
 *  Throws std::runtime_error if the library creates no handle. */
std::unique_ptr<Engine> makeOurEngine(const Layout& layout, const Material& material,
                                      std::size_t call_frames);

// The library's algorithm without vectors, one convolver per path. The library's vector code is measured
// against it and must give the same bits. Layouts must have one stage.

/** @param material must outlive the engine
 *  Throws std::invalid_argument for a layout of more than one stage. */
std::unique_ptr<Engine> makeScalarEngine(const Layout& layout, const Material& material);

// zita-convolver with uniform partitions of 256 frames. The stages of a layout run one after the other.

/** Throws std::runtime_error if zita-convolver rejects a response or does not start. */
std::unique_ptr<Engine> makeZitaEngine(const Layout& layout, const Material& material);

/** Version of the linked library, such as "4.0". */
std::string zitaVersion();

}  // namespace compare
