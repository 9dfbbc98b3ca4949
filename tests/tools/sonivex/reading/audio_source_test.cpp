#include "audio_source.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>

#include "failure.h"
#include "support/processes/process.h"
#include "support/processes/temporary_folder.h"

namespace {

using namespace sonivex_tool;

// A film of 2 s: 50 pictures, a tone that begins at 0.5 s and lasts 1.5 s, and another tone.
class AudioSourceOfAFilm : public testing::Test {
  protected:
    void SetUp() override {
        const auto result = test::runProcess({"ffmpeg",     "-nostdin",
                                              "-v",         "error",
                                              "-f",         "lavfi",
                                              "-i",         "testsrc=duration=2:size=64x64:rate=25",
                                              "-itsoffset", "0.5",
                                              "-f",         "lavfi",
                                              "-i",         "sine=duration=1.5:sample_rate=48000",
                                              "-f",         "lavfi",
                                              "-i",         "sine=duration=2:sample_rate=48000",
                                              "-map",       "0",
                                              "-map",       "1",
                                              "-map",       "2",
                                              "-c:v",       "mpeg4",
                                              "-c:a",       "pcm_s16le",
                                              film_});
        ASSERT_EQ(result.exit_code, 0) << result.err;
    }

    struct Counts {
        int packets = 0;
        int64_t frames = 0;
        int64_t last_pts = -1;
        bool is_in_order = true;
    };

    static Counts count(AudioSource& source) {
        Counts counts;
        while (true) {
            const SourceItem item = source.next();
            if (item.isEnd()) return counts;
            if (item.frame != nullptr) {
                counts.frames += item.frame->nb_samples;
                continue;
            }
            ++counts.packets;
            EXPECT_EQ(item.packet->stream_index, 0);
            counts.is_in_order = counts.is_in_order && item.packet->dts > counts.last_pts;
            counts.last_pts = item.packet->dts;
        }
    }

    test::TemporaryFolder folder_;
    std::string film_ = folder_.file("film.mkv");
};

TEST_F(AudioSourceOfAFilm, DeliversThePacketsOfTheStreamsAskedFor) {
    InputSettings settings;
    settings.path = film_;
    settings.keeps_packets = true;
    AudioSource source(settings);
    source.deliverPackets({true, true, false});  // the second is the audio stream itself
    const Counts counts = count(source);
    EXPECT_EQ(counts.packets, 50) << "the packets before the first frame must not be lost";
    EXPECT_TRUE(counts.is_in_order);
    EXPECT_EQ(counts.frames, 72000);
}

TEST_F(AudioSourceOfAFilm, DeliversAllPacketsOfAFileThatItReadsTwiceToSaveMemory) {
    InputSettings settings;
    settings.path = film_;
    settings.keeps_packets = true;
    settings.most_kept_bytes = 1;
    AudioSource source(settings);
    source.deliverPackets({true, false, false});
    source.insertLeadIn();
    const Counts counts = count(source);
    EXPECT_EQ(counts.packets, 50);
    EXPECT_TRUE(counts.is_in_order);
    EXPECT_EQ(counts.frames, 24000 + 72000);
    EXPECT_FALSE(source.damageReport().isDamaged());
}

TEST_F(AudioSourceOfAFilm, RefusesAPipeWhosePacketsDoNotFitIntoMemory) {
    const std::string pipe = folder_.file("pipe");
    ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
    std::thread writer([&] { (void)test::runProcess({"cp", film_, pipe}); });
    {
        InputSettings settings;
        settings.path = pipe;
        settings.keeps_packets = true;
        settings.most_kept_bytes = 1;
        AudioSource source(settings);
        EXPECT_THROW(source.deliverPackets({true, false, false}), Failure);
        source.deliverPackets({false, false, false});
        EXPECT_EQ(count(source).frames, 72000);
    }
    writer.join();
}

TEST_F(AudioSourceOfAFilm, DeliversNoPacketsOtherwise) {
    InputSettings settings;
    settings.path = film_;
    AudioSource source(settings);
    const Counts counts = count(source);
    EXPECT_EQ(counts.packets, 0);
    EXPECT_EQ(counts.frames, 72000);
    EXPECT_NEAR(source.info().start_seconds, 0.5, 0.001);
    EXPECT_EQ(source.info().audio_streams, 2);
}

TEST_F(AudioSourceOfAFilm, LeadInBringsTheAudioToTheStartOfThePicture) {
    InputSettings settings;
    settings.path = film_;
    AudioSource source(settings);
    source.insertLeadIn();
    EXPECT_EQ(count(source).frames, 24000 + 72000);
    EXPECT_NEAR(source.timelineReport().lead_in_s, 0.5, 0.001);
    EXPECT_FALSE(source.damageReport().isDamaged());
}

TEST(AudioSource, LeadInIsLongerThanLibavformatLooksAhead) {
    const test::TemporaryFolder folder;
    const std::string path = folder.file("late.mkv");
    const auto made = test::runProcess({"ffmpeg",     "-nostdin",
                                        "-v",         "error",
                                        "-f",         "lavfi",
                                        "-i",         "testsrc=duration=704:size=64x64:rate=1",
                                        "-itsoffset", "700",
                                        "-f",         "lavfi",
                                        "-i",         "sine=duration=1.5:sample_rate=48000",
                                        "-map",       "0",
                                        "-map",       "1",
                                        "-c:v",       "mpeg4",
                                        "-c:a",       "pcm_s16le",
                                        path});
    ASSERT_EQ(made.exit_code, 0) << made.err;
    InputSettings settings;
    settings.path = path;
    AudioSource source(settings);
    source.insertLeadIn();
    int64_t frames = 0;
    for (FramePtr frame = source.read(); frame != nullptr; frame = source.read()) frames += frame->nb_samples;
    EXPECT_EQ(frames, 700 * 48000 + 72000);
    EXPECT_NEAR(source.timelineReport().lead_in_s, 700.0, 0.001);
    EXPECT_EQ(source.timelineReport().jumps, 0U);
}

TEST(AudioSource, TellsHowMuchOfAWavFileIsMissing) {
    const test::TemporaryFolder folder;
    const std::string path = folder.file("a.wav");
    const auto made = test::runProcess({"ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i",
                                        "sine=duration=20:sample_rate=48000", path});
    ASSERT_EQ(made.exit_code, 0) << made.err;
    InputSettings settings;
    settings.path = path;
    const auto missing_s = [&] {
        AudioSource source(settings);
        while (source.read() != nullptr) {
        }
        return source.damageReport().missing_end_s;
    };
    EXPECT_EQ(missing_s(), 0.0);
    const auto whole = std::filesystem::file_size(path);
    std::filesystem::resize_file(path, whole - 8 * 96000);
    EXPECT_NEAR(missing_s(), 8.0, 0.001);
    std::filesystem::resize_file(path, whole - 8 * 96000 - 1001);
    EXPECT_NEAR(missing_s(), 8.0 + 1001.0 / 96000, 0.001);
}

// Some versions of FFmpeg write two frames of AC-3 where one is asked for. Each begins with the same bytes.
std::string firstFrame(const std::string& ac3) {
    return ac3.substr(0, ac3.find("\x0b\x77", 2));
}

TEST(AudioSource, PutsSilenceInPlaceOfAFrameWhoseRateDamageMadeUp) {
    const test::TemporaryFolder folder;
    for (const std::string rate_hz : {"48000", "32000"}) {
        const auto made = test::runProcess({"ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i",
                                            "sine=duration=1:sample_rate=" + rate_hz, "-frames:a",
                                            rate_hz == "48000" ? "30" : "1", folder.file(rate_hz + ".ac3")});
        ASSERT_EQ(made.exit_code, 0) << made.err;
    }
    const std::string sound = test::readFile(folder.file("48000.ac3"));
    test::writeFile(folder.file("a.ac3"),
                    sound + firstFrame(test::readFile(folder.file("32000.ac3"))) + sound);
    AudioSource source({.path = folder.file("a.ac3")});
    constexpr int kFrame = 1536;
    int64_t frames = 0;
    while (const FramePtr frame = source.read()) {
        EXPECT_EQ(frame->sample_rate, 48000);
        frames += frame->nb_samples;
    }
    EXPECT_EQ(frames, 2 * 30 * kFrame + kFrame * 48000 / 32000);
    EXPECT_EQ(source.damageReport().decode_errors, 1U);
    EXPECT_NEAR(source.damageReport().filled_s, kFrame / 32000.0, 1e-6);
}

// Reads 16-bit mono to the end.
std::vector<int16_t> rest(AudioSource& source) {
    std::vector<int16_t> samples;
    while (const FramePtr frame = source.read()) {
        const auto* values = reinterpret_cast<const int16_t*>(frame->extended_data[0]);
        samples.insert(samples.end(), values, values + frame->nb_samples);
    }
    return samples;
}

// The timestamps of Matroska are rounded to 1 ms, those of MOV are exact.
class SeekingInAFilm : public AudioSourceOfAFilm {
  protected:
    void SetUp() override {
        AudioSourceOfAFilm::SetUp();
        const auto result = test::runProcess({"ffmpeg", "-nostdin", "-v", "error", "-i", film_, "-map", "0",
                                              "-c", "copy", folder_.file("film.mov")});
        ASSERT_EQ(result.exit_code, 0) << result.err;
        film_ = folder_.file("film.mov");
    }
};

TEST_F(SeekingInAFilm, LandsAtTheSampleInAStreamThatBeginsLate) {
    AudioSource whole({.path = film_, .stream = "0"});
    const std::vector<int16_t> expected = rest(whole);
    ASSERT_EQ(expected.size(), 72000U);
    AudioSource source({.path = film_, .stream = "0"});
    for (const double target_s : {1.0, 0.3, 1.2, 0.0}) {
        SCOPED_TRACE(target_s);
        EXPECT_NEAR(source.seek(target_s), target_s, 1e-9);
        const auto from = static_cast<ptrdiff_t>(target_s * 48000.0);
        EXPECT_EQ(rest(source), std::vector<int16_t>(expected.begin() + from, expected.end()));
    }
}

TEST_F(SeekingInAFilm, NothingFollowsASeekBeyondTheEnd) {
    AudioSource source({.path = film_, .stream = "0"});
    EXPECT_NEAR(source.seek(100.0), 1.5, 1e-9);
    EXPECT_TRUE(rest(source).empty());
    EXPECT_NEAR(source.seek(1.0), 1.0, 1e-9);
    EXPECT_EQ(rest(source).size(), 24000U);
}

TEST(AudioSource, ASeekBeyondTheEndLosesNothingOfAWholeFile) {
    const test::TemporaryFolder folder;
    for (const char* name : {"a.wav", "a.mka"}) {
        const std::string path = folder.file(name);
        const auto made = test::runProcess({"ffmpeg", "-nostdin", "-v", "error", "-f", "lavfi", "-i",
                                            "sine=duration=4:sample_rate=48000", path});
        ASSERT_EQ(made.exit_code, 0) << made.err;
        AudioSource source({.path = path});
        EXPECT_NEAR(source.knownLength_s().value_or(0.0), 4.0, 0.02) << name;
        EXPECT_NEAR(source.seek(30.0), 4.0, 0.02) << name;
        EXPECT_TRUE(rest(source).empty()) << name;
        EXPECT_FALSE(source.damageReport().isDamaged()) << name;
    }
    // In a file that is cut off, what was not skipped is lost.
    std::filesystem::resize_file(folder.file("a.wav"), 2 * 96000);
    AudioSource source({.path = folder.file("a.wav")});
    EXPECT_NEAR(source.seek(3.0), 3.0, 0.001);
    EXPECT_TRUE(rest(source).empty());
    EXPECT_NEAR(source.damageReport().missing_end_s, 1.0, 0.001);
}

TEST_F(SeekingInAFilm, ASourceThatWasAbandonedStaysSoAfterASeek) {
    AudioSource source({.path = film_, .stream = "0"});
    source.abandon();
    source.seek(0.0);
    EXPECT_LT(rest(source).size(), 72000U);
}

}  // namespace
