// A Player with the real filter, and what comes out of it.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "support/frames/audio_frames.h"
#include "support/signals/signals.h"
#include "vorlin/player.h"

namespace test {

constexpr char kSurround[] = R"({"enable_surround": true})";
constexpr char kDialogue[] = R"({"enable_dialoguenhance": true})";
constexpr char kNormalizer[] = R"({"enable_normalizer": true})";
constexpr char kNothing[] =
    R"({"enable_surround": false, "enable_dialoguenhance": false, "enable_normalizer": false})";

/** One frame that came out. */
struct Played {
    const Vorlin::IQFFrame* object;  // its address, to compare only
    int64_t pts;
    int64_t duration;
    int format;
    int channels;
    int frames;
    bool is_described;  // its description is that of its samples, which lie in its buffers
    std::string mark;   // metadata "mark"
    void* opaque;
    std::vector<uint8_t> side_data;  // ReplayGain
    Pcm samples;
};

/** Plays a stream of 16-bit noise, cut into frames. */
class PlayerRun {
  public:
    explicit PlayerRun(const Vorlin::PlayerConfig& config, const std::string& options);

    Vorlin::Player& player() { return *player_; }

    /** Pushes the next frame of the stream: samples of `all` from the last frame's end on.
     *  @param pts  AV_NOPTS_VALUE for none.
     *  @param mark metadata; empty for none.
     *  @return the address of the pushed object. */
    const Vorlin::IQFFrame* push(const Pcm& all, const FrameSpec& spec, int64_t pts,
                                 const std::string& mark = {}, AVRational time_base = {0, 1});
    /** Goes to another place in `all`, in frames. */
    void goTo(int64_t frame) { next_ = frame; }
    int64_t position() const { return next_; }

    void drain() { EXPECT_EQ(player_->drain(), 0); }

    const std::vector<Played>& played() const { return played_; }
    /** Returns the samples of everything that came out from the frame number `first` on, interleaved. */
    Pcm sound(std::size_t first = 0) const;
    /** Forgets what came out. */
    void clear() { played_.clear(); }

  private:
    std::vector<Played> played_;
    std::unique_ptr<Vorlin::Player> player_;
    int64_t next_ = 0;
};

/** Frames in each frame that pushFrames pushes. */
inline constexpr int kStreamFrame = 480;

/** Pushes the next `count` frames of `in`, which follow each other without a gap. */
void pushFrames(PlayerRun& run, const Pcm& in, int count, FrameSpec spec = {});

/** Returns what an effect makes of a whole stream in calls of 1024 frames, moved forward by its delay there
 *  and cut or continued to `frames`: the aem_ functions alone, without filter and player. The delays are 1024
 *  frames for surround, 1536 for dialogue enhancement and 0 for the normalizer.
 *  @param options one of the constants above. */
Pcm effectAlone(const std::string& options, const Pcm& in, int channels, int64_t frames, int rate_hz = 48000);

/** Returns `frames` frames of `pcm` from `first` on. */
Pcm cut(const Pcm& pcm, int channels, int64_t first, int64_t frames);

}  // namespace test
