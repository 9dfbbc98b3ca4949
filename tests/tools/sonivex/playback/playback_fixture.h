#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "end_to_end/media/media.h"
#include "playback.h"
#include "plugin_search.h"
#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"

namespace test {

/** Plays files of a temporary folder into a vector. */
class PlaybackTest : public testing::Test {
  protected:
    static constexpr int kRate_hz = 48000;

    std::string file(const std::string& name) const { return folder_.file(name); }

    /** Makes a stereo tone of 440 Hz at -6 dBFS. */
    std::string tone(double seconds) const {
        ffmpeg({"-f", "lavfi", "-i",
                "aevalsrc=0.5*sin(2*PI*440*t)|0.5*sin(2*PI*440*t):s=48000:d=" + std::to_string(seconds),
                "-c:a", "pcm_f32le", file("tone.wav")});
        return file("tone.wav");
    }

    /** Makes stereo noise whose level rises and falls as that of speech does, with 16 bits. */
    std::string programme(double seconds, const std::string& name = "programme.wav",
                          const std::vector<std::string>& options = {"-c:a", "pcm_s16le"}) const {
        std::vector<std::string> arguments = {
            "-f",
            "lavfi",
            "-i",
            "anoisesrc=c=pink:r=48000:a=0.3:seed=7:d=" + std::to_string(seconds),
            "-f",
            "lavfi",
            "-i",
            "anoisesrc=c=pink:r=48000:a=0.3:seed=8:d=" + std::to_string(seconds),
            "-filter_complex",
            "amerge=inputs=2,tremolo=f=3:d=0.7"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        arguments.push_back(file(name));
        ffmpeg(arguments);
        return file(name);
    }

    static sonivex_tool::PlaybackSettings settings(const std::string& path, const std::string& effect) {
        sonivex_tool::PlaybackSettings settings;
        settings.input.path = path;
        settings.choice.chain = {sonivex_tool::findEffect(effect)};
        return settings;
    }

    static std::unique_ptr<sonivex_tool::Playback> open(const sonivex_tool::PlaybackSettings& settings) {
        return std::make_unique<sonivex_tool::Playback>(settings, sonivex_tool::loadPlugin(SONIVEX_PLUGIN));
    }

    /** Renders up to `frames` frames in calls of 480. */
    static std::vector<float> render(sonivex_tool::Playback& playback, int frames) {
        std::vector<float> samples;
        std::vector<float> block(2 * 480);
        while (frames > 0) {
            const int wanted = std::min(frames, 480);
            const int rendered = playback.render(block.data(), wanted);
            samples.insert(samples.end(), block.begin(),
                           block.begin() + static_cast<ptrdiff_t>(rendered) * 2);
            frames -= rendered;
            if (rendered < wanted) break;
        }
        return samples;
    }
    static std::vector<float> renderAll(sonivex_tool::Playback& playback) {
        return render(playback, 100'000'000);
    }

    TemporaryFolder folder_;
};

}  // namespace test
