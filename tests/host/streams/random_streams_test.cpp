// Streams of random frames, gaps and switches: every frame that was pushed comes out once, whole and in
// order.
#include "host/streams/player_run.h"

namespace test {
namespace {

constexpr AVRational kSamples{1, 48000};
constexpr int kSeeds = 40;
constexpr int kSteps = 150;

struct Expected {
    int64_t pts;
    int frames;
};

class PlayerRandomStreams : public testing::TestWithParam<bool> {};
INSTANTIATE_TEST_SUITE_P(Filter, PlayerRandomStreams, testing::Bool(),
                         [](const auto& of) { return of.param ? "Active" : "Inactive"; });

// Changes something in mid-stream, or nothing.
void disturb(Random& random, PlayerRun& run, FrameSpec& spec, int64_t& pts) {
    switch (random.between(0, 40)) {
        case 0:
            pts += random.between(-20'000, 40'000);
            break;
        case 1:
            run.player().setBypass(random.between(0, 1) == 1);
            break;
        case 2:
            run.player().setVideoFps(random.between(0, 1) == 1 ? 100 : 25);
            break;
        case 3: {
            const std::vector<const char*> options{kSurround, kDialogue, kNormalizer, kNothing};
            EXPECT_TRUE(run.player().setOptions(options[static_cast<std::size_t>(random.between(0, 3))]));
            break;
        }
        case 4:
            spec.channels = std::vector{1, 2, 3, 6, 8}[static_cast<std::size_t>(random.between(0, 4))];
            break;
        case 5:
            spec.format = random.between(0, 1) == 1 ? AV_SAMPLE_FMT_S16 : AV_SAMPLE_FMT_FLTP;
            break;
        case 6:
            run.drain();
            break;
        default:
            break;
    }
}

TEST_P(PlayerRandomStreams, LoseAndRepeatNothing) {
    const Pcm sound = noise(1, 8 * 8192, 6000);
    for (int seed = 1; seed <= (GetParam() ? kSeeds / 4 : kSeeds); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(static_cast<uint64_t>(seed));
        const int calls[] = {1024, 1024, 512, 240, 300, 8192, 0};
        PlayerRun run({.active = GetParam(),
                       .call_frames = calls[random.between(0, 6)],
                       .delivers_tail = random.between(0, 1) == 1,
                       .time_base = kSamples},
                      kSurround);
        FrameSpec spec;
        int64_t pts = 0;
        std::vector<Expected> pushed;
        for (int step = 0; step < (GetParam() ? kSteps / 3 : kSteps); ++step) {
            disturb(random, run, spec, pts);
            spec.frames = random.between(0, 20) == 0 ? random.between(1, 8000) : random.between(1, 300);
            run.goTo(0);
            run.push(sound, spec, pts, std::to_string(pushed.size()));
            pushed.push_back({pts, spec.frames});
            pts += spec.frames;
        }
        run.drain();

        std::size_t number = 0;
        int64_t done = 0;
        for (const Played& part : run.played()) {
            if (part.mark.empty()) continue;  // a tail
            ASSERT_LT(number, pushed.size());
            ASSERT_EQ(part.mark, std::to_string(number)) << "frames must come out in order";
            ASSERT_EQ(part.pts, pushed[number].pts + done) << "in frame " << number;
            ASSERT_EQ(part.duration, part.frames);
            ASSERT_GT(part.frames, 0);
            done += part.frames;
            ASSERT_LE(done, pushed[number].frames);
            if (done < pushed[number].frames) continue;
            ++number;
            done = 0;
        }
        ASSERT_EQ(number, pushed.size()) << "a frame is missing";
    }
}

}  // namespace
}  // namespace test
