#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

extern "C" {
#include <libavutil/samplefmt.h>
}

#include "random_host/byte_source.h"

namespace test {

/** Fills `memory` with samples of the packed format `format`: noise, silence, full scale, samples that are
 *  not finite where the format has them, or bytes as they come. */
void fillSamples(std::span<std::uint8_t> memory, AVSampleFormat format, ByteSource& bytes);

/** Makes the tables from which fillSamples takes its noise, which the first use of a format would make. */
void makeNoiseTables();

/** @return true if the samples of `format` in `memory` are finite and within full scale. */
bool areWithinFullScale(std::span<const std::uint8_t> memory, AVSampleFormat format);

}  // namespace test
