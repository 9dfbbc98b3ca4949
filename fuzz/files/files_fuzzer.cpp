// A media file on its way through "render", without an effect: it is read as far as it can be decoded, its
// gaps are filled, and the sound is encoded into a container in memory together with the other streams. The
// input is the file. Its length selects the container that is written, whether the reader seeks, and how much
// room there is.

extern "C" {
#include <libavutil/log.h>
}

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <new>
#include <string>

#include "audio_source.h"
#include "failure.h"
#include "format_converter.h"
#include "media_sink.h"
#include "memory_output.h"
#include "output_plan.h"
#include "support/memory_file.h"
#include "support/promise.h"

namespace {

using fuzz::require;
using sonivex_tool::AudioSource;
using sonivex_tool::SourceItem;

constexpr int kMostItems = 600;                 // frames and packets that are read of one input
constexpr std::int64_t kMostSamples = 1 << 20;  // of all channels

/** A file that claims a high rate, many channels or a wide gap has frames without end, so reading stops
 *  somewhere. */
class Ration {
  public:
    explicit Ration(const AudioSource& source) : channels_(source.info().spec.channels()) {}
    bool take(const SourceItem& item) {
        if (item.isEnd() || ++items_ > kMostItems) return false;
        if (item.frame != nullptr) samples_ += std::int64_t{item.frame->nb_samples} * std::max(channels_, 1);
        return samples_ <= kMostSamples;
    }

  private:
    int channels_;
    int items_ = 0;
    std::int64_t samples_ = 0;
};

void requireSoundFrame(const AVFrame& frame) {
    require(frame.nb_samples > 0, "a frame has samples");
    require(frame.sample_rate > 0, "a frame has a rate");
    require(frame.extended_data != nullptr && frame.extended_data[0] != nullptr, "a frame has data");
}

sonivex_tool::OutputSettings outputFor(std::size_t size) {
    static const char* const kPaths[] = {"x.wav", "x.mka", "x.mkv", "x.flac", "x.mov", "x.ogg"};
    sonivex_tool::OutputSettings settings = {.path = kPaths[size % 6]};
    if (size % 6 == 1 || size % 6 == 2 || size % 6 == 4) settings.codec = "pcm_s16le";
    if (size % 6 == 5) settings.codec = "flac";
    settings.keep_other_audio = size % 12 >= 6;
    return settings;
}

void copyFile(AudioSource& source, std::size_t size) {
    const auto plan = sonivex_tool::planOutput(outputFor(size), source.container(), source.stream().index,
                                               source.info().spec, source.info().bits_per_sample);
    (void)sonivex_tool::describe(plan);
    (void)sonivex_tool::planAsJson(plan);
    source.deliverPackets(sonivex_tool::wantedPackets(plan));
    if (!plan.is_film) source.insertLeadIn();

    fuzz::MemoryOutput output(size % 7 == 0 ? 3000 : std::size_t{8} << 20);
    sonivex_tool::FormatConverter converter(plan.encoder.spec,
                                            {.dither = true, .bits = plan.encoder.bits_per_sample});
    sonivex_tool::MediaSink sink(plan, source.container(), plan.is_film ? source.info().start_seconds : 0.0,
                                 output);
    const auto write = [&sink](const sonivex_tool::FramePtr& frame) {
        if (frame != nullptr) sink.write(*frame);
    };
    Ration ration(source);
    for (SourceItem item = source.next(); ration.take(item); item = source.next()) {
        if (item.frame != nullptr) requireSoundFrame(*item.frame);
        if (item.frame != nullptr) write(converter.convert(std::move(item.frame)));
        if (item.packet != nullptr) sink.copy(*item.packet);
    }
    write(converter.flush());
    sink.finish();
    output.commit();
    (void)sink.notes();
    require(!output.bytes().empty(), "a finished output is not empty");
}

void seekAbout(AudioSource& source, std::size_t size) {
    for (const double seconds : {0.1, 0.0, static_cast<double>(size % 97) / 40.0}) {
        if (!source.canSeek()) return;
        const double reached_s = source.seek(seconds);
        require(std::isfinite(reached_s) && reached_s >= 0.0, "a seek ends at a place in the file");
        Ration ration(source);
        for (int i = 0; i < 4; ++i) {
            const SourceItem item = source.next();
            if (!ration.take(item)) break;
            if (item.frame != nullptr) requireSoundFrame(*item.frame);
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    av_log_set_level(AV_LOG_QUIET);
    const fuzz::MemoryFile file(bytes, size);
    const bool seeks = size % 4 == 3;
    try {
        AudioSource source({.path = file.path(), .keeps_packets = !seeks});
        require(source.info().spec.rate_hz > 0 && source.info().spec.channels() > 0,
                "a stream has a rate and channels");
        (void)sonivex_tool::sentencesOn("x", source.info());
        if (seeks) {
            seekAbout(source, size);
        } else {
            copyFile(source, size);
        }
        (void)source.damageReport();
        (void)source.timelineReport();
        (void)source.knownLength_s();
    } catch (const std::bad_alloc&) {
        // libavformat asks for as much memory as a damaged file demands, and has limits of its own.
    } catch (const sonivex_tool::Failure& failure) {
        require(failure.what()[0] != '\0', "a refusal tells its reason");
        require(failure.exitCode() != sonivex_tool::ExitCode::Internal, "no input causes an internal error");
    }
    return 0;
}
