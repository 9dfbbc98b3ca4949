#pragma once

#include "aem_effect.h"
#include "support/byte_stream.h"

namespace fuzz {

/** Makes the calls that the stream asks for: good ones, which StreamCheck compares with `reference`, and
 *  calls that the effect must refuse. Both handles must be new or reset. */
void makeAemCalls(ByteStream& stream, const AemEffect& effect, const AemEffect& reference);

/** Keeps the effects' log lines from standard output. */
void silenceEffects();

}  // namespace fuzz
