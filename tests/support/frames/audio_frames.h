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
    std::string layout{};  // libavutil's name, such as "5.1(side)"; empty: default of the channel count
};

/** Returns the 16-bit sample at a frame and channel. Other formats hold the same value in their own scale. */
using SampleSource = std::function<int16_t(int frame, int channel)>;

/** Makes a frame that owns its memory. Every format except u8 holds each 16-bit sample exactly; u8 keeps the
 *  upper byte. */
std::unique_ptr<Vorlin::AVQFFrame> makeFrame(const FrameSpec& spec, const SampleSource& source);

/** Returns the samples of a frame, interleaved, as 16-bit. Fails the test if a sample is not an exact 16-bit
 *  value. */
std::vector<int16_t> samplesOf(const AVFrame* frame);

/** Returns the AVFrame inside a frame, which keeps it; null if the frame is not an AVQFFrame. */
AVFrame* avFrameOf(const std::unique_ptr<Vorlin::IQFFrame>& frame);

/** Returns every sample format that libavutil knows. */
std::vector<AVSampleFormat> allSampleFormats();

/** Makes white noise, uniform over -amplitude-1..amplitude and different in every channel. Each sample
 *  depends on its place alone, so the samples may be read in any order. */
SampleSource noiseSource(std::uint32_t seed, int amplitude = 32767);

}  // namespace test
