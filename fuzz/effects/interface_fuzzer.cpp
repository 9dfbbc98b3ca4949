// The effects through the common interface of libsonivex. The input begins with the effect and its settings,
// for two handles that are reused after a reset. Then come operations, one byte each and what it reads:
//
//     a block of floats, also not finite, in calls of any length, out of place or in place
//     a change of the voice level, a reset, calls that must be refused, handles with any settings
//
// Between two resets a handle either streams or processes call by call. The second handle gets the same
// stream cut into other calls, or the same calls as 16 bits, and must put out the same.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <map>
#include <span>
#include <tuple>
#include <utility>
#include <vector>

#include "sonivex/effect.h"
#include "support/byte_stream.h"
#include "support/guarded_samples.h"
#include "support/promise.h"

namespace {

using fuzz::ByteStream;
using fuzz::require;

constexpr int kMostFrames = 3000;  // of one input
constexpr float kMark = 12345.0F;

/** The arguments of the functions that create, all as plain numbers. */
struct Settings {
    int effect = 0;
    int channels = 0;
    int rate_hz = 0;
    int type = 0;
    int mode = 0;
    int limiter = 0;
    double voice_level = 0.0;
    auto key() const { return std::tie(effect, channels, rate_hz, type, mode, limiter); }
    bool operator<(const Settings& other) const { return key() < other.key(); }
};

int create(SonivexEffect** effect, const Settings& settings) {
    switch (settings.effect) {
        case SONIVEX_SURROUND:
            return sonivex_create_surround(effect, settings.channels, settings.rate_hz, settings.type,
                                           settings.mode, settings.limiter);
        case SONIVEX_DIALOGUE:
            return sonivex_create_dialogue(effect, settings.rate_hz, settings.voice_level);
        default:
            return sonivex_create_normalizer(effect, settings.channels, settings.rate_hz);
    }
}

bool isUsualRate(int rate_hz) {
    return rate_hz >= 8000 && rate_hz <= 192000;
}

/** Returns what the header says of these settings. */
int expectedStatus(const Settings& settings) {
    if (settings.effect == SONIVEX_SURROUND) {
        if (settings.mode < 1 || settings.mode > 3 || settings.limiter < 0 || settings.limiter > 1) {
            return SONIVEX_ERROR_ARGUMENT;
        }
        const bool is_rate = settings.rate_hz == 44100 || settings.rate_hz == 48000;
        const bool is_layout = settings.channels == 2 || settings.channels == 6 || settings.channels == 8;
        const bool is_type = settings.type == 1 || settings.type == 13;
        return is_rate && is_layout && is_type ? SONIVEX_OK : SONIVEX_ERROR_UNSUPPORTED;
    }
    if (settings.effect == SONIVEX_DIALOGUE) {
        if (!(settings.voice_level >= 0.0 && settings.voice_level <= 100.0)) return SONIVEX_ERROR_ARGUMENT;
        return isUsualRate(settings.rate_hz) ? SONIVEX_OK : SONIVEX_ERROR_UNSUPPORTED;
    }
    const bool is_count = settings.channels >= 1 && settings.channels <= 8;
    return is_count && isUsualRate(settings.rate_hz) ? SONIVEX_OK : SONIVEX_ERROR_UNSUPPORTED;
}

/** Reads settings that are supported. */
Settings readSupported(ByteStream& stream) {
    constexpr int kLayouts[] = {2, 6, 8};
    constexpr int kTypes[] = {1, 13};
    constexpr int kRates_hz[] = {48000, 44100};
    constexpr int kDialogueRates_hz[] = {48000, 96000, 192000};
    Settings settings = {.effect = stream.inRange(SONIVEX_SURROUND, SONIVEX_NORMALIZER)};
    if (settings.effect == SONIVEX_SURROUND) {
        settings.channels = stream.oneOf(kLayouts);
        settings.rate_hz = stream.oneOf(kRates_hz);
        settings.type = stream.oneOf(kTypes);
        settings.mode = settings.type == 13 ? stream.inRange(1, 3) : 1;
        settings.limiter = stream.inRange(0, 1);
    } else if (settings.effect == SONIVEX_DIALOGUE) {
        settings.channels = 2;
        settings.rate_hz = stream.oneOf(kDialogueRates_hz);
        settings.voice_level = 1.0;
    } else {
        settings.channels = stream.inRange(1, 8);
        settings.rate_hz = 48000;
    }
    return settings;
}

/** Returns one of two handles with these settings, as new. */
SonivexEffect* reused(const Settings& settings, int number) {
    static auto& handles = *new std::map<std::pair<Settings, int>, SonivexEffect*>;
    SonivexEffect*& handle = handles[{settings, number}];
    if (handle == nullptr) {
        require(create(&handle, settings) == SONIVEX_OK, "supported settings get a handle");
    } else {
        sonivex_reset(handle);
        const int status = sonivex_set_voice_level(handle, 1.0);
        const int expected = settings.effect == SONIVEX_DIALOGUE ? SONIVEX_OK : SONIVEX_ERROR_ARGUMENT;
        require(status == expected, "dialogue enhancement alone has a voice level");
    }
    return handle;
}

/** Creates a handle with any numbers, and releases it. */
void createWithAnySettings(ByteStream& stream) {
    const auto any = [&stream](int usual) { return stream.flag() ? usual : stream.number(); };
    Settings settings;
    settings.effect = stream.inRange(SONIVEX_SURROUND, SONIVEX_NORMALIZER);
    settings.channels = any(6);
    settings.rate_hz = any(48000);
    settings.type = any(13);
    settings.mode = any(3);
    settings.limiter = any(1);
    settings.voice_level = stream.longReal();
    auto* effect = reinterpret_cast<SonivexEffect*>(&settings);  // must be overwritten
    const int status = create(&effect, settings);
    require(status == expectedStatus(settings), "a creation returns the status that its header says");
    require((effect != nullptr) == (status == SONIVEX_OK), "the handle is null after an error");
    require(create(nullptr, settings) == SONIVEX_ERROR_ARGUMENT, "a creation needs a place for the handle");
    sonivex_release(effect);
}

float readSample(ByteStream& stream) {
    return stream.flag() ? stream.real()
                         : static_cast<float>(static_cast<std::int16_t>(stream.word())) / 32768.0F;
}

void fillWithFloats(std::span<float> block, ByteStream& stream) {
    const int kind = stream.byte();
    if (kind < 0x60) {
        std::vector<std::int16_t> samples(block.size());
        fuzz::fillWithSamples(samples, stream);
        std::transform(samples.begin(), samples.end(), block.begin(),
                       [](std::int16_t sample) { return static_cast<float>(sample) / 32768.0F; });
        return;
    }
    std::array<float, 16> period = {};
    const std::size_t length = 1 + static_cast<std::size_t>(kind & 15);
    for (std::size_t i = 0; i < length; ++i) period[i] = readSample(stream);
    for (std::size_t i = 0; i < block.size(); ++i) block[i] = period[i % length];
}

int callLength(ByteStream& stream, int block_frames) {
    switch (stream.byte() % 4) {
        case 0:
            return stream.byte();
        case 1:
            return block_frames;
        case 2:
            return block_frames / stream.inRange(1, 8);
        default:
            return stream.inRange(0, 3000);
    }
}

void requireSound(std::span<const float> samples) {
    for (const float sample : samples) {
        require(std::isfinite(sample) && std::abs(sample) <= 1.0F,
                "a sample that comes out is finite and within full scale");
        require(sample * 32768.0F == std::trunc(sample * 32768.0F),
                "a sample that comes out is a multiple of 1/32768");
    }
}

class Run {
  public:
    Run(const Settings& settings, ByteStream& stream)
        : stream_(stream),
          effect_(reused(settings, 0)),
          other_(reused(settings, 1)),
          channels_in_(static_cast<std::size_t>(sonivex_input_channels(effect_))),
          channels_out_(static_cast<std::size_t>(sonivex_output_channels(effect_))),
          block_frames_(sonivex_block_frames(effect_)),
          is_dialogue_(settings.effect == SONIVEX_DIALOGUE) {}

    void goOn() {
        is_streaming_ = stream_.flag();
        beginAgain();
        while (frames_ < kMostFrames && !stream_.isEmpty()) {
            const int operation = stream_.byte();
            if (operation < 0xC0) {
                is_streaming_ ? streamFloats() : processCall();
            } else if (operation < 0xD0) {
                setVoiceLevel();
            } else if (operation < 0xE0) {
                askForLatency();
            } else if (operation < 0xF0) {
                makeRefusedCalls();
            } else if (operation < 0xF8) {
                createWithAnySettings(stream_);
            } else {
                compareStreams();
                is_streaming_ = stream_.flag();
                sonivex_reset(effect_);
                sonivex_reset(other_);
                beginAgain();
            }
        }
        compareStreams();
    }

  private:
    void beginAgain() {
        in_.assign(channels_in_, {});
        out_.assign(channels_out_, {});
        levels_.clear();
    }

    void streamFloats() {
        const int frames = callLength(stream_, block_frames_);
        const auto count = static_cast<std::size_t>(frames);
        const bool is_in_place = channels_in_ == channels_out_ && stream_.flag();
        std::vector<fuzz::GuardedSamples<float>> planes;
        std::vector<const float*> in;
        std::vector<float*> out;
        for (std::size_t i = 0; i < std::max(channels_in_, channels_out_); ++i)
            planes.emplace_back(count, kMark);
        std::vector<std::vector<float>> inputs(channels_in_, std::vector<float>(count));
        for (std::size_t i = 0; i < channels_in_; ++i) {
            fillWithFloats(inputs[i], stream_);
            in_[i].insert(in_[i].end(), inputs[i].begin(), inputs[i].end());
            if (is_in_place) std::copy(inputs[i].begin(), inputs[i].end(), planes[i].data());
            in.push_back(is_in_place ? planes[i].data() : inputs[i].data());
        }
        // In place the channels change places, which the header allows.
        for (std::size_t i = 0; i < channels_out_; ++i) out.push_back(planes[channels_out_ - 1 - i].data());
        require(sonivex_stream_float(effect_, in.data(), out.data(), frames) == SONIVEX_OK,
                "a block is taken");
        for (std::size_t i = 0; i < channels_out_; ++i) {
            auto& plane = planes[channels_out_ - 1 - i];
            plane.requireWholeGuards();
            requireSound(plane.samples());
            out_[i].insert(out_[i].end(), plane.samples().begin(), plane.samples().end());
        }
        frames_ += frames;
    }

    /** Sends what was streamed through the other handle in calls of other lengths. */
    void compareStreams() {
        if (!is_streaming_) return;
        const auto total = static_cast<int>(in_.front().size());
        std::vector<std::vector<float>> out(channels_out_, std::vector<float>(in_.front().size()));
        std::size_t next_level = 0;
        for (int first = 0; first < total;) {
            while (next_level < levels_.size() && levels_[next_level].first == first) {
                sonivex_set_voice_level(other_, levels_[next_level++].second);
            }
            int frames = std::min(total - first, 613);
            if (next_level < levels_.size()) frames = std::min(frames, levels_[next_level].first - first);
            std::vector<const float*> in_planes;
            std::vector<float*> out_planes;
            for (const auto& plane : in_) in_planes.push_back(plane.data() + first);
            for (auto& plane : out) out_planes.push_back(plane.data() + first);
            require(sonivex_stream_float(other_, in_planes.data(), out_planes.data(), frames) == SONIVEX_OK,
                    "a block is taken");
            first += frames;
        }
        for (; next_level < levels_.size(); ++next_level)
            sonivex_set_voice_level(other_, levels_[next_level].second);
        require(out == out_, "a stream's output does not depend on the lengths of the calls");
    }

    void processCall() {
        const int frames = callLength(stream_, block_frames_);
        const auto count = static_cast<std::size_t>(frames);
        const bool is_in_place = channels_in_ == channels_out_ && stream_.flag();
        std::vector<float> in(count * channels_in_);
        fillWithFloats(in, stream_);
        fuzz::GuardedSamples<float> out(count * channels_out_, kMark);
        if (is_in_place) std::copy(in.begin(), in.end(), out.data());
        const float* const source = is_in_place ? out.data() : in.data();
        require(sonivex_process_float(effect_, source, out.data(), frames) == SONIVEX_OK, "a call is taken");
        out.requireWholeGuards();
        requireSound(out.samples());

        std::vector<std::int16_t> in16(in.size());
        std::transform(in.begin(), in.end(), in16.begin(), [](float sample) {
            if (std::isnan(sample)) return std::int16_t{0};
            return static_cast<std::int16_t>(
                std::nearbyint(std::clamp(double{sample} * 32768.0, -32768.0, 32767.0)));
        });
        fuzz::GuardedSamples<std::int16_t> out16(count * channels_out_, 0x7A7A);
        require(sonivex_process_int16(other_, in16.data(), out16.data(), frames) == SONIVEX_OK,
                "a call is taken");
        out16.requireWholeGuards();
        require(std::equal(out.samples().begin(), out.samples().end(), out16.samples().begin(),
                           [](float real, std::int16_t whole) {
                               return real * 32768.0F == static_cast<float>(whole);
                           }),
                "floats and 16 bits come out equal");
        frames_ += frames;
    }

    void setVoiceLevel() {
        const double level = stream_.flag() ? stream_.byte() * 0.5 : stream_.longReal();
        const int status = sonivex_set_voice_level(effect_, level);
        const bool is_taken = is_dialogue_ && level >= 0.0 && level <= 100.0;
        require(status == (is_taken ? SONIVEX_OK : SONIVEX_ERROR_ARGUMENT),
                "a voice level is taken in its range only");
        if (!is_taken) return;
        if (is_streaming_) {
            levels_.emplace_back(static_cast<int>(in_.front().size()), level);
        } else {
            sonivex_set_voice_level(other_, level);
        }
    }

    void askForLatency() {
        const int frames = stream_.flag() ? stream_.number() : stream_.inRange(1, SONIVEX_MAX_CALL_FRAMES);
        const int latency = sonivex_latency_frames(effect_, frames);
        const bool is_length = frames >= 1 && frames <= SONIVEX_MAX_CALL_FRAMES;
        require(is_length ? latency >= 0 || latency == SONIVEX_ERROR_GAPS : latency == SONIVEX_ERROR_ARGUMENT,
                "a latency is a count of frames or a status");
        require(sonivex_latency_frames(nullptr, frames) == SONIVEX_ERROR_ARGUMENT, "null has no latency");
        require(sonivex_stream_latency_frames(effect_) >= block_frames_,
                "a stream is late by a block at least");
        require(sonivex_tail_frames(effect_) >= 0, "a tail is a count of frames");
        require(sonivex_status_text(stream_.number()) != nullptr, "every status has a text");
    }

    void makeRefusedCalls() {
        fuzz::GuardedSamples<float> out(64, kMark);
        const std::vector<float> in(64);
        std::vector<const float*> in_planes(channels_in_, in.data());
        std::vector<float*> out_planes(channels_out_, out.data());
        const int frames = stream_.flag() ? stream_.inRange(-2147483647, -1)
                                          : stream_.inRange(SONIVEX_MAX_CALL_FRAMES + 1, 2147483647);
        fuzz::GuardedSamples<std::int16_t> out16(64, 0x7A7A);
        const std::vector<std::int16_t> in16(64);
        bool is_refused = true;
        const auto refuse = [&is_refused](int status) {
            is_refused = is_refused && status == SONIVEX_ERROR_ARGUMENT;
        };
        refuse(sonivex_stream_float(effect_, in_planes.data(), out_planes.data(), frames));
        refuse(sonivex_stream_float(nullptr, in_planes.data(), out_planes.data(), 1));
        refuse(sonivex_stream_float(effect_, nullptr, out_planes.data(), 1));
        refuse(sonivex_stream_float(effect_, in_planes.data(), nullptr, 1));
        refuse(sonivex_process_float(effect_, in.data(), out.data(), frames));
        refuse(sonivex_process_float(nullptr, in.data(), out.data(), 1));
        refuse(sonivex_process_float(effect_, nullptr, out.data(), 1));
        refuse(sonivex_process_float(effect_, in.data(), nullptr, 1));
        refuse(sonivex_process_int16(effect_, in16.data(), out16.data(), frames));
        refuse(sonivex_process_int16(nullptr, in16.data(), out16.data(), 1));
        refuse(sonivex_process_int16(effect_, nullptr, out16.data(), 1));
        refuse(sonivex_process_int16(effect_, in16.data(), nullptr, 1));
        in_planes[static_cast<std::size_t>(stream_.inRange(0, static_cast<int>(channels_in_) - 1))] = nullptr;
        refuse(sonivex_stream_float(effect_, in_planes.data(), out_planes.data(), 1));
        require(is_refused, "a call with a null pointer or a length out of range is refused");
        require(sonivex_stream_float(effect_, nullptr, nullptr, 0) == SONIVEX_OK &&
                    sonivex_process_float(effect_, nullptr, nullptr, 0) == SONIVEX_OK &&
                    sonivex_process_int16(effect_, nullptr, nullptr, 0) == SONIVEX_OK,
                "a call of no frames is taken");
        out.requireUntouched();
        out16.requireUntouched();
    }

    ByteStream& stream_;
    SonivexEffect* effect_;
    SonivexEffect* other_;
    std::size_t channels_in_;
    std::size_t channels_out_;
    int block_frames_;
    bool is_dialogue_;
    bool is_streaming_ = false;
    int frames_ = 0;
    std::vector<std::vector<float>> in_;  // what was streamed since the last reset: [channel][frame]
    std::vector<std::vector<float>> out_;
    std::vector<std::pair<int, double>> levels_;  // voice levels, and the frame before which they were set
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    ByteStream stream(bytes, size);
    const Settings settings = readSupported(stream);
    Run(settings, stream).goOn();
    return 0;
}
