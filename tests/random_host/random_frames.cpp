#include "random_host/random_frames.h"

#include <bit>
#include <climits>
#include <cstring>
#include <utility>
#include <vector>

extern "C" {
#include <libavutil/adler32.h>
#include <libavutil/channel_layout.h>
#include <libavutil/dict.h>
#include <libavutil/mem.h>
}

#include "random_host/samples.h"
#include "vorlin/av_compat.h"

namespace test {

namespace {

using Vorlin::IQFFrame;
using Vorlin::OwnedAVFrame;
using Kind = FrameNote::Kind;

constexpr std::size_t kPlaneAlignment_bytes = 64;

void setLayout(AVFrame& frame, const Sound& sound) {
    AVChannelLayout layout{};
    switch (sound.order) {
        case Sound::Order::kMask:
            av_channel_layout_from_mask(&layout, sound.mask);
            break;
        case Sound::Order::kUnspecified:
            layout.order = AV_CHANNEL_ORDER_UNSPEC;
            layout.nb_channels = sound.channels;
            break;
        case Sound::Order::kCustom:
            // The loudspeakers stand in the order of their numbers, but the layout does not say so.
            layout.order = AV_CHANNEL_ORDER_CUSTOM;
            layout.nb_channels = sound.channels;
            layout.u.map = static_cast<AVChannelCustom*>(
                av_calloc(static_cast<std::size_t>(sound.channels), sizeof(*layout.u.map)));
            for (int i = 0; i < sound.channels; ++i) layout.u.map[i].id = static_cast<AVChannel>(i);
            break;
        case Sound::Order::kDefault:
            av_channel_layout_default(&layout, sound.channels);
            break;
    }
    Vorlin::av::setFrameLayout(&frame, layout);
    av_channel_layout_uninit(&layout);
}

bool isStandardLayout(std::uint64_t mask) {
    void* position = nullptr;
    while (const AVChannelLayout* layout = av_channel_layout_standard(&position)) {
        if (Vorlin::av::layoutMask(*layout) == mask) return true;
    }
    return false;
}

std::uint64_t randomMask(int channels, ByteSource& bytes) {
    if (bytes.oneIn(2)) {
        std::vector<std::uint64_t> masks;
        void* position = nullptr;
        while (const AVChannelLayout* layout = av_channel_layout_standard(&position)) {
            if (layout->nb_channels == channels) masks.push_back(Vorlin::av::layoutMask(*layout));
        }
        if (!masks.empty()) return masks[bytes.below(static_cast<std::uint32_t>(masks.size()))];
    }
    constexpr int kLoudspeakers = 41;  // of libavutil
    std::uint64_t mask = 0;
    while (std::popcount(mask) < channels) {
        std::uint64_t speaker = std::uint64_t{1} << bytes.below(kLoudspeakers);
        while ((mask & speaker) != 0) speaker <<= 1U;
        mask |= speaker;
    }
    return mask;
}

struct Planes {
    int count;
    std::size_t bytes;  // of each
};

Planes planesOf(const AVFrame& frame) {
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const bool is_planar = av_sample_fmt_is_planar(format) != 0;
    const int channels = frame.ch_layout.nb_channels;
    return {is_planar ? channels : 1, static_cast<std::size_t>(frame.nb_samples) *
                                          static_cast<std::size_t>(is_planar ? 1 : channels) *
                                          static_cast<std::size_t>(av_get_bytes_per_sample(format))};
}

// Gives `frame` samples in memory that it does not own.
std::vector<std::uint8_t> lendMemory(AVFrame& frame, ByteSource& bytes) {
    const Planes planes = planesOf(frame);
    const std::size_t step =
        (planes.bytes + kPlaneAlignment_bytes - 1) / kPlaneAlignment_bytes * kPlaneAlignment_bytes;
    std::vector<std::uint8_t> memory(step * static_cast<std::size_t>(planes.count));
    for (int i = 0; i < planes.count; ++i) {
        frame.data[i] = memory.data() + step * static_cast<std::size_t>(i);
    }
    frame.linesize[0] = bytes.oneIn(2) ? static_cast<int>(planes.bytes) : 0;
    return memory;
}

void fill(AVFrame& frame, ByteSource& bytes) {
    const Planes planes = planesOf(frame);
    const AVSampleFormat packed = av_get_packed_sample_fmt(static_cast<AVSampleFormat>(frame.format));
    for (int i = 0; i < planes.count; ++i) fillSamples({frame.extended_data[i], planes.bytes}, packed, bytes);
}

void addProperties(AVFrame& frame, ByteSource& bytes) {
    frame.pts = bytes.oneIn(8) ? AV_NOPTS_VALUE : static_cast<std::int64_t>(bytes.word()) << 16U;
    frame.opaque = &frame;
    Vorlin::av::setFrameDuration(&frame, frame.nb_samples);
    if (bytes.oneIn(16)) av_dict_set(&frame.metadata, "mark", "1", 0);
    if (bytes.oneIn(16)) av_frame_new_side_data(&frame, AV_FRAME_DATA_REPLAYGAIN, 16);
}

FrameNote noteOf(const AVFrame& frame) {
    FrameNote note;
    note.kind = Kind::kWithSamples;
    note.format = frame.format;
    note.channels = frame.ch_layout.nb_channels;
    note.rate_hz = frame.sample_rate;
    note.frames = frame.nb_samples;
    note.pts = frame.pts;
    note.opaque = frame.opaque;
    note.metadata = av_dict_count(frame.metadata);
    note.side_data = frame.nb_side_data;
    note.first_plane = frame.extended_data != nullptr ? frame.extended_data[0] : nullptr;
    return note;
}

// Keeps a reference to the first buffer of a frame, as a decoder does that reads it once more.
void share(const AVFrame& frame, FrameNote& note) {
    note.shared.reset(av_buffer_ref(frame.buf[0]));
    note.shared_sum = sumOf(*note.shared);
}

// Makes `frame` and its description differ. Whatever is chosen, the frame can still be freed. Only a frame
// that counts its references tells how long its memory is, so another one does not lie about that.
void lie(AVFrame& frame, IQFFrame::audioInfo& info, ByteSource& bytes) {
    static std::uint8_t elsewhere[16];
    switch (bytes.below(frame.buf[0] != nullptr ? 12 : 10)) {
        case 0:
            info.format = (info.format + 1 + static_cast<int>(bytes.below(11))) % AV_SAMPLE_FMT_NB;
            break;
        case 1:
            info.format = bytes.of({-2, -1, static_cast<int>(AV_SAMPLE_FMT_NB), 77, INT_MAX, INT_MIN});
            break;
        case 2:
            info.channels = info.channels == 2 ? bytes.of({1, 6, 8, 3, 0, -1, 64, INT_MAX, INT_MIN}) : 2;
            break;
        case 3:
            info.sample_rate = info.sample_rate == 48000 ? bytes.of({44100, 16000, 0, -1, INT_MAX}) : 48000;
            break;
        case 10:
            frame.nb_samples = bytes.of({1 << 24, INT_MAX, INT_MAX / 2 + 1});
            info.nb_samples = frame.nb_samples;
            break;
        case 5:
            frame.nb_samples = bytes.of({0, -1, INT_MIN});
            info.nb_samples = frame.nb_samples;
            break;
        case 6:
            info.channel_layout = info.channels == 3 ? 0x3 : 0x7;
            break;
        case 7:
            frame.extended_data[0] = nullptr;
            break;
        case 9:
            frame.format = (frame.format + 1 + static_cast<int>(bytes.below(11))) % AV_SAMPLE_FMT_NB;
            break;
        case 4:
            frame.sample_rate = frame.sample_rate == 48000 ? 44100 : 48000;
            break;
        case 8:
            Vorlin::av::setFrameDefaultLayout(&frame, frame.ch_layout.nb_channels == 2 ? 6 : 2);
            break;
        default:
            frame.extended_data[0] = elsewhere;
            break;
    }
}

RandomFrame finish(OwnedAVFrame samples, std::vector<std::uint8_t> memory) {
    RandomFrame made;
    made.note = noteOf(*samples);
    made.note.record = std::make_shared<FrameRecord>();
    made.frame = std::make_unique<TrackedFrame>(samples.release(), made.note.record, std::move(memory));
    made.note.object = made.frame.get();
    made.note.info = made.frame->getInfo();
    return made;
}

}  // namespace

std::uint32_t sumOf(const AVBufferRef& buffer) {
    return av_adler32_update(1, buffer.data, buffer.size);
}

Sound randomSound(ByteSource& bytes) {
    static constexpr int kChannels[] = {2, 2, 2, 2, 6, 6, 8, 1};
    static constexpr int kOddChannels[] = {3, 4, 5, 7, 9, 64, 0};
    static constexpr int kRates_hz[] = {48000, 48000, 44100, 44100, 16000};
    static constexpr int kOddRates_hz[] = {96000, 8000, 11025, 0, 1, -1, INT_MAX};
    Sound sound;
    sound.format = static_cast<AVSampleFormat>(bytes.below(AV_SAMPLE_FMT_NB));
    sound.channels = bytes.oneIn(8) ? bytes.of(kOddChannels) : bytes.of(kChannels);
    sound.rate_hz = bytes.oneIn(8) ? bytes.of(kOddRates_hz) : bytes.of(kRates_hz);
    if (sound.channels < 1 || sound.channels > 8) return sound;
    sound.order = bytes.of({Sound::Order::kDefault, Sound::Order::kDefault, Sound::Order::kMask,
                            Sound::Order::kUnspecified, Sound::Order::kCustom});
    if (sound.order == Sound::Order::kMask) sound.mask = randomMask(sound.channels, bytes);
    return sound;
}

RandomFrame makeHonestFrame(const Sound& sound, int longest_frames, ByteSource& bytes) {
    OwnedAVFrame samples(av_frame_alloc());
    samples->format = sound.format;
    samples->sample_rate = sound.rate_hz;
    samples->nb_samples = static_cast<int>(bytes.below(static_cast<std::uint32_t>(longest_frames) + 1));
    setLayout(*samples, sound);
    addProperties(*samples, bytes);
    std::vector<std::uint8_t> memory;
    bool has_samples = samples->nb_samples > 0 && sound.channels > 0;
    if (has_samples && sound.channels <= AV_NUM_DATA_POINTERS && bytes.oneIn(8)) {
        memory = lendMemory(*samples, bytes);
    } else if (has_samples) {
        has_samples = av_frame_get_buffer(samples.get(), 0) == 0;
    }
    if (has_samples) fill(*samples, bytes);

    AVFrame& frame = *samples;
    RandomFrame made = finish(std::move(samples), std::move(memory));
    made.note.is_honest = has_samples && sound.rate_hz > 0;
    made.note.has_common_layout = sound.order != Sound::Order::kMask || isStandardLayout(sound.mask);
    if (frame.buf[0] != nullptr && bytes.oneIn(8)) share(frame, made.note);
    return made;
}

RandomFrame makeOddFrame(const Sound& sound, ByteSource& bytes) {
    constexpr int kLongest_frames = 600;
    RandomFrame made;
    switch (bytes.below(8)) {
        case 0:
            return made;
        case 1: {
            made.note.record = std::make_shared<FrameRecord>();
            made.frame = std::make_unique<TrackedFrame>(nullptr, made.note.record);
            break;
        }
        case 2: {
            IQFFrame::audioInfo info{.format = sound.format,
                                     .channels = sound.channels,
                                     .sample_rate = sound.rate_hz,
                                     .nb_samples = static_cast<int>(bytes.below(kLongest_frames)),
                                     .channel_layout = sound.mask};
            if (bytes.oneIn(4)) info.format = static_cast<int>(bytes.word());
            if (bytes.oneIn(4)) info.channel_layout = bytes.word();
            made.note.record = std::make_shared<FrameRecord>();
            made.frame = std::make_unique<StrangeFrame>(info, made.note.record);
            break;
        }
        default: {
            made = makeHonestFrame(sound, kLongest_frames, bytes);
            if (!made.note.is_honest || sound.channels > AV_NUM_DATA_POINTERS) return made;
            AVFrame* samples = static_cast<TrackedFrame&>(*made.frame);
            lie(*samples, made.frame->getInfo(), bytes);
            FrameNote note = noteOf(*samples);
            note.record = made.note.record;
            note.object = made.note.object;
            note.info = made.frame->getInfo();
            note.shared = std::move(made.note.shared);
            note.shared_sum = made.note.shared_sum;
            note.has_common_layout = made.note.has_common_layout;
            made.note = std::move(note);
            return made;
        }
    }
    made.note.kind = Kind::kWithoutSamples;
    made.note.object = made.frame.get();
    made.note.info = made.frame->getInfo();
    return made;
}

}  // namespace test
