// Frames of any length: they come out as they went in, with the sound that the effect makes of the whole
// stream.
#include <algorithm>
#include <numeric>
#include <tuple>

#include "host/streams/player_run.h"
#include "support/effects/dialogue_effect.h"
#include "support/signals/signal_matchers.h"

namespace test {
namespace {

constexpr int kRate_hz = 48000;

struct Cut {
    const char* name;
    std::vector<int> lengths;  // repeated in turn
    int total;
};

// Opus (2.5 and 20 ms), MP3, FLAC, frames of all sizes, and single frames longer than an effect's rings.
const Cut kCuts[] = {
    {"Opus120", {120}, 30'000},       {"Opus960", {960}, 30'000},
    {"Aac1024", {1024}, 30'720},      {"Mp3_1152", {1152}, 34'560},
    {"Flac4608", {4608}, 46'080},     {"Mixed", {1, 7000, 240, 1023, 1025, 333}, 40'000},
    {"Huge65536", {65'536}, 131'072}, {"OneShort", {100'000}, 500},
};

struct Case {
    const char* name;
    const char* options;
    int channels;
    int tail;  // frames, from the length of the response
};
const Case kCases[] = {
    {"Normalizer", kNormalizer, 2, 0},  {"Dialogue", kDialogue, 2, 0}, {"Surround", kSurround, 2, 13'000},
    {"Surround51", kSurround, 6, 8544}, {"Nothing", kNothing, 2, 0},
};

class PlayerFrames : public testing::TestWithParam<std::tuple<Cut, Case, bool>> {};
INSTANTIATE_TEST_SUITE_P(Streams, PlayerFrames,
                         testing::Combine(testing::ValuesIn(kCuts), testing::ValuesIn(kCases),
                                          testing::Bool()),
                         [](const auto& of) {
                             return std::string(std::get<0>(of.param).name) + std::get<1>(of.param).name +
                                    (std::get<2>(of.param) ? "Active" : "Inactive");
                         });

TEST_P(PlayerFrames, ComeOutAsTheyWentInWithTheSoundOfTheWholeStream) {
    const auto& [lengths, effect, is_active] = GetParam();
    // Every case has another sample format.
    constexpr AVSampleFormat kFormats[] = {AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_FLT,
                                           AV_SAMPLE_FMT_S32P};
    const std::size_t number = lengths.lengths.size() + static_cast<std::size_t>(effect.channels / 2);
    const AVSampleFormat format = kFormats[(number + (is_active ? 1 : 0)) % std::size(kFormats)];
    const Pcm in = noise(7, lengths.total * effect.channels, 6000);
    PlayerRun run({.active = is_active, .time_base = {1, kRate_hz}}, effect.options);

    struct Pushed {
        const Vorlin::IQFFrame* object;
        int64_t pts;
        int frames;
    };
    std::vector<Pushed> pushed;
    for (std::size_t i = 0; run.position() < lengths.total; ++i) {
        const int left = lengths.total - static_cast<int>(run.position());
        const int frames = std::min(lengths.lengths[i % lengths.lengths.size()], left);
        const int64_t pts = 5000 + run.position();
        const auto* object = run.push(in, {.format = format, .channels = effect.channels, .frames = frames},
                                      pts, std::to_string(i));
        pushed.push_back({object, pts, frames});
    }
    run.drain();

    const auto& played = run.played();
    ASSERT_GE(played.size(), pushed.size());
    for (std::size_t i = 0; i < pushed.size(); ++i) {
        SCOPED_TRACE("frame " + std::to_string(i));
        ASSERT_EQ(played[i].object, pushed[i].object) << "the pushed object comes back";
        ASSERT_EQ(played[i].pts, pushed[i].pts);
        ASSERT_EQ(played[i].frames, pushed[i].frames);
        ASSERT_EQ(played[i].duration, pushed[i].frames);
        ASSERT_EQ(played[i].mark, std::to_string(i));
        ASSERT_EQ(played[i].format, format);
        ASSERT_TRUE(played[i].is_described);
    }
    int64_t next = 5000 + lengths.total;
    for (std::size_t i = pushed.size(); i < played.size(); ++i) {
        ASSERT_EQ(played[i].pts, next) << "the tail follows without a gap";
        ASSERT_EQ(played[i].duration, played[i].frames);
        EXPECT_EQ(played[i].mark, "");
        next += played[i].frames;
    }
    EXPECT_EQ(next - 5000 - lengths.total, effect.tail);

    const Pcm expected = effect.options == std::string(kNothing)
                             ? in
                             : effectAlone(effect.options, in, effect.channels, lengths.total + effect.tail);
    const int out_channels = effect.options == std::string(kSurround) ? 2 : effect.channels;
    EXPECT_TRUE(sameSignal(run.sound(), expected, {.channels = out_channels}));
}

TEST(PlayerFrame, OfAnyFormatComesOutUnchangedIfNoEffectIsOn) {
    for (const AVSampleFormat format : allSampleFormats()) {
        SCOPED_TRACE(av_get_sample_fmt_name(format));
        Pcm in = noise(3, 3 * 3000, 30'000);
        for (int16_t& sample : in) sample = static_cast<int16_t>(sample & ~0xFF);  // u8 holds no more
        PlayerRun run({.active = false, .time_base = {1, kRate_hz}}, kNothing);
        for (int i = 0; i < 25; ++i)
            run.push(in, {.format = format, .channels = 3, .frames = 120}, run.position());
        run.drain();
        ASSERT_EQ(run.played().size(), 25U);
        EXPECT_EQ(run.played()[7].format, format);
        EXPECT_TRUE(sameSignal(run.sound(), cut(in, 3, 0, 3000), {.channels = 3}));
    }
}

TEST(PlayerFrame, KeepsItsSideDataAndTheFieldsOfItsOwner) {
    int owner = 0;
    PlayerRun run({.active = false, .time_base = {1, kRate_hz}}, kSurround);
    const Vorlin::IQFFrame* object = nullptr;
    {
        auto frame = makeFrame({.frames = 500}, noiseSource(1));
        AVFrame* samples = *frame;
        AVFrameSideData* gain = av_frame_new_side_data(samples, AV_FRAME_DATA_REPLAYGAIN, 4);
        std::fill_n(gain->data, 4, uint8_t{42});
        samples->opaque = &owner;
        object = frame.get();
        EXPECT_EQ(run.player().push(std::move(frame)), 0);
    }
    run.drain();
    ASSERT_GT(run.played().size(), 1U);
    EXPECT_EQ(run.played()[0].object, object);
    EXPECT_EQ(run.played()[0].opaque, &owner);
    EXPECT_EQ(run.played()[0].side_data, (std::vector<uint8_t>{42, 42, 42, 42}));
    EXPECT_EQ(run.played()[1].opaque, nullptr) << "the tail is no frame of the owner's";
    EXPECT_TRUE(run.played()[1].side_data.empty());
}

TEST(PlayerFrame, WithoutSamplesComesOutInItsPlace) {
    const Pcm in = noise(3, 2 * 4000, 6000);
    PlayerRun run({.active = false, .time_base = {1, kRate_hz}}, kDialogue);
    AVFrame* raw = av_frame_alloc();
    raw->format = AV_SAMPLE_FMT_S16;
    raw->sample_rate = kRate_hz;
    av_channel_layout_default(&raw->ch_layout, 2);
    raw->pts = 1000;
    run.push(in, {.frames = 1000}, 0);
    auto frame = std::make_unique<Vorlin::AVQFFrame>(raw);
    const Vorlin::IQFFrame* object = frame.get();
    EXPECT_EQ(run.player().push(std::move(frame)), 0);
    run.push(in, {.frames = 3000}, 1000);
    run.drain();
    ASSERT_EQ(run.played().size(), 3U);
    EXPECT_EQ(run.played()[1].object, object);
    EXPECT_EQ(run.played()[1].frames, 0);
    EXPECT_TRUE(sameSignal(run.sound(), effectAlone(kDialogue, in, 2, 4000)));
}

TEST(PlayerFrame, PassesAsItComesWithACallLengthOfZero) {
    const Pcm in = noise(3, 2 * 9216, 6000);
    PlayerRun run({.active = false, .call_frames = 0, .corrects_times = false}, kDialogue);
    for (int i = 0; i < 2; ++i) run.push(in, {.frames = 4608}, run.position());
    run.drain();
    EXPECT_EQ(run.player().counts().pushed, 2U);
    EXPECT_TRUE(sameSignal(run.sound(), DialogueEffect().processInCallsOf(4608, in)));
}

// Calls of 4608 frames make surround late by 4608 frames, and calls of different lengths by other amounts.
TEST(PlayerFrame, HasItsTimeCorrectedInCallsOfAnyLength) {
    for (const std::vector<int>& lengths : {std::vector{4608}, {1000, 2000, 300}, {120}, {300}}) {
        SCOPED_TRACE(lengths[0]);
        const Pcm in = noise(3, 2 * 27'648, 6000);
        PlayerRun run({.active = false, .call_frames = 0, .time_base = {1, kRate_hz}}, kSurround);
        for (std::size_t i = 0; run.position() + 4608 <= 27'648; ++i)
            run.push(in, {.frames = lengths[i % lengths.size()]}, run.position());
        const int64_t pushed = run.position();
        run.drain();
        EXPECT_TRUE(
            sameSignal(run.sound(), effectAlone(kSurround, cut(in, 2, 0, pushed), 2, pushed + 13'000)));
    }
}

TEST(PlayerFrame, StaysLateIfTimesAreNotCorrected) {
    const Pcm in = noise(3, 2 * 12'000, 6000);
    PlayerRun run({.active = false, .corrects_times = false, .time_base = {1, kRate_hz}}, kSurround);
    for (int i = 0; i < 100; ++i) run.push(in, {.frames = 120}, run.position());
    run.drain();
    ASSERT_EQ(run.played().size(), 100U);
    const Pcm aligned = effectAlone(kSurround, in, 2, 12'000 - 1024);
    EXPECT_TRUE(sameSignal(cut(run.sound(), 2, 0, 1024), Pcm(2 * 1024)));
    EXPECT_TRUE(sameSignal(cut(run.sound(), 2, 1024, 12'000 - 1024), aligned));
}

}  // namespace
}  // namespace test
