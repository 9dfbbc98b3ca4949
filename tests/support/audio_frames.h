#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/samplefmt.h>
}

#include "vorlin/av_frame.h"

namespace test {

struct FrameSpec {
    AVSampleFormat format = AV_SAMPLE_FMT_S16;
    int channels = 2;
    int rate_hz = 48000;
    int frames = 1024;
    std::string layout{};  // as libavutil writes layouts; empty: the default one of the channel count
};

/** The 16-bit sample of a frame and channel; other formats hold the same value in their own scale. */
using SampleSource = std::function<int16_t(int frame, int channel)>;

/** A frame in memory of its own. Every format except u8 holds each 16-bit sample exactly; u8 its upper byte.
 */
std::unique_ptr<Vorlin::AVQFFrame> makeFrame(const FrameSpec& spec, const SampleSource& source);

/** The samples of a frame, interleaved, as 16-bit. Fails the test when a sample is no exact 16-bit value. */
std::vector<int16_t> samplesOf(const AVFrame* frame);

AVFrame* avFrameOf(const std::unique_ptr<Vorlin::IQFFrame>& frame);

/** Every sample format that libavutil knows. */
std::vector<AVSampleFormat> allSampleFormats();

/** Reproducible noise over the whole 16-bit range, different for each seed. */
SampleSource noise(uint32_t seed, int amplitude = 32767);

}  // namespace test
