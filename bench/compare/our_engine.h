// The library through its public functions: 16-bit PCM in and out, limiter on.
#pragma once

#include "engine.h"
#include "material.h"

namespace compare {

/** One block of the library: such calls have no delay. */
inline constexpr std::size_t kShortCall_frames = 240;
/** A frame of many decoders, and so a call of the filter. A call makes four or five blocks of 240. */
inline constexpr std::size_t kLongCall_frames = 1024;

/** @param call_frames one of the two above. */
std::unique_ptr<Engine> makeOurEngine(const Layout& layout, const Material& material,
                                      std::size_t call_frames);

}  // namespace compare
