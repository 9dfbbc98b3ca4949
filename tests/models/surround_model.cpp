#include "surround_model.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "impulse_response_tables.h"

namespace model {
namespace {

constexpr std::size_t kBlockFrames = 240;
constexpr std::size_t kRingHolds = 81919;
constexpr std::size_t kLeft = 0;
constexpr std::size_t kRight = 1;

// Appends as many samples as the ring has room for and drops the rest.
void queue(std::deque<std::int16_t>& ring, const Samples& samples) {
    const std::size_t room = kRingHolds - ring.size();
    const auto taken = static_cast<std::ptrdiff_t>(std::min(room, samples.size()));
    ring.insert(ring.end(), samples.begin(), samples.begin() + taken);
}

// Takes `count` samples, or returns silence if there are fewer.
Samples take(std::deque<std::int16_t>& ring, std::size_t count) {
    if (ring.size() < count) return Samples(count, 0);
    const auto end = ring.begin() + static_cast<std::ptrdiff_t>(count);
    Samples samples(ring.begin(), end);
    ring.erase(ring.begin(), end);
    return samples;
}

}  // namespace

void Rendering::Stage::add(std::size_t from, std::size_t to, const std::int16_t* table, std::size_t taps,
                           double divisor) {
    Path path{from, to, {}};
    for (std::size_t i = 0; i < taps; ++i) {
        path.response.push_back(static_cast<double>(static_cast<float>(table[i] / divisor)));
    }
    paths_.push_back(path);
}

std::vector<double> Rendering::Stage::process(const std::vector<double>& in, std::size_t width) {
    const std::size_t frames = in.size() / width;
    for (const Path& path : paths_) {
        std::vector<double>& coming = coming_[path.to];
        if (coming.size() < frames + path.response.size()) coming.resize(frames + path.response.size());
        for (std::size_t frame = 0; frame < frames; ++frame) {
            const double sample = in[frame * width + path.from];
            if (sample == 0) continue;
            const double* const response = path.response.data();
            double* const sum = coming.data() + frame;
            for (std::size_t i = 0; i < path.response.size(); ++i) sum[i] += sample * response[i];
        }
    }
    std::vector<double> out;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        for (const std::vector<double>& coming : coming_) out.push_back(coming.at(frame));
    }
    for (std::vector<double>& coming : coming_) {
        coming.erase(coming.begin(), coming.begin() + static_cast<std::ptrdiff_t>(frames));
    }
    return out;
}

#define SOURCE(channel, name, divisor)                                                   \
    loudspeakers_.add(channel, kLeft, k_##name##L48, std::size(k_##name##L48), divisor); \
    loudspeakers_.add(channel, kRight, k_##name##R48, std::size(k_##name##R48), divisor)

#define SURROUND_2(mode)                                                                      \
    loudspeakers_.add(0, kLeft, k_2_1_h_##mode##L48, std::size(k_2_1_h_##mode##L48), 20000);  \
    loudspeakers_.add(1, kRight, k_2_1_h_##mode##R48, std::size(k_2_1_h_##mode##R48), 20000); \
    loudspeakers_.add(0, kLeft, k_2_2_h_##mode##L48, std::size(k_2_2_h_##mode##L48), 20000);  \
    loudspeakers_.add(1, kRight, k_2_2_h_##mode##R48, std::size(k_2_2_h_##mode##R48), 20000)

#define SURROUND_5_1(mode)            \
    SOURCE(0, 5_1_1_h_##mode, 20000); \
    SOURCE(1, 5_1_2_h_##mode, 20000); \
    SOURCE(2, 5_1_3_h_##mode, 20000); \
    SOURCE(4, 5_1_4_h_##mode, 20000); \
    SOURCE(5, 5_1_5_h_##mode, 20000)

#define SURROUND_7_1(mode)            \
    SOURCE(0, 7_1_1_h_##mode, 20000); \
    SOURCE(1, 7_1_2_h_##mode, 20000); \
    SOURCE(2, 7_1_3_h_##mode, 20000); \
    SOURCE(4, 7_1_4_h_##mode, 20000); \
    SOURCE(5, 7_1_5_h_##mode, 20000); \
    SOURCE(6, 7_1_6_h_##mode, 20000); \
    SOURCE(7, 7_1_7_h_##mode, 20000)

Rendering::Rendering(int type, int channels, int mode)
    : channels_(static_cast<std::size_t>(channels)), has_audio_stage_(type == 13) {
    if (type == 1 && channels == 2) {
        loudspeakers_.add(0, kLeft, k_cingoLL48, 13000, 10000);
        loudspeakers_.add(0, kRight, k_cingoLR48, 13000, 10000);
        loudspeakers_.add(1, kLeft, k_cingoRL48, 13000, 10000);
        loudspeakers_.add(1, kRight, k_cingoRR48, 13000, 10000);
    } else if (type == 1 && channels == 6) {
        SOURCE(0, 5_1_1_h_c, 20000);
        SOURCE(1, 5_1_2_h_c, 20000);
        SOURCE(2, 5_1_3_h_c, 20000);
        SOURCE(3, 5_1_4_h_c, 20000);
        SOURCE(4, 5_1_5_h_c, 20000);
        SOURCE(5, 5_1_6_h_c, 20000);
    } else if (type == 1) {
        SOURCE(0, 7_1_1_h_c, 20000);
        SOURCE(1, 7_1_2_h_c, 20000);
        SOURCE(2, 7_1_3_h_c, 20000);
        SOURCE(3, 7_1_4_h_c, 20000);
        SOURCE(4, 7_1_5_h_c, 20000);
        SOURCE(5, 7_1_6_h_c, 20000);
        SOURCE(6, 7_1_7_h_c, 20000);
        SOURCE(7, 7_1_8_h_c, 20000);
    } else if (channels == 2 && mode == 1) {
        SURROUND_2(mode1);
    } else if (channels == 2 && mode == 2) {
        SURROUND_2(mode2);
    } else if (channels == 2) {
        SURROUND_2(mode3);
    } else if (channels == 6 && mode == 1) {
        SURROUND_5_1(mode1);
    } else if (channels == 6 && mode == 2) {
        SURROUND_5_1(mode2);
    } else if (channels == 6) {
        SURROUND_5_1(mode3);
    } else if (mode == 1) {
        SURROUND_7_1(mode1);
    } else if (mode == 2) {
        SURROUND_7_1(mode2);
    } else {
        SURROUND_7_1(mode3);
    }
    audio_.add(0, kLeft, k_dolby441, 6000, 24000);
    audio_.add(1, kRight, k_dolby441, 6000, 24000);
}

std::vector<double> Rendering::process(const std::vector<double>& in) {
    const std::vector<double> ears = loudspeakers_.process(in, channels_);
    return has_audio_stage_ ? audio_.process(ears, 2) : ears;
}

Samples OutputStage::process(const std::vector<double>& block) {
    std::vector<float> numbers;
    for (const double sample : block) {
        const auto x = static_cast<float>(sample);
        const float clipped = limits_ ? x : std::clamp(x, -1.0F, 1.0F);
        numbers.push_back(clipped < 0 ? clipped * 32768.0F : clipped * 32767.0F);
    }
    if (limits_) numbers = limiter_.process(numbers);
    Samples out;
    for (const float number : numbers) {
        out.push_back(static_cast<std::int16_t>(std::clamp(std::trunc(number), -32768.0F, 32767.0F)));
    }
    return out;
}

std::vector<double> toUnitScale(const Samples& samples) {
    std::vector<double> scaled;
    for (const std::int16_t sample : samples) scaled.push_back(sample / (sample < 0 ? 32768.0 : 32767.0));
    return scaled;
}

Samples Surround::process(const Samples& in) {
    queue(waiting_, in);
    while (waiting_.size() >= kBlockFrames * channels_) {
        queue(done_,
              output_.process(rendering_.process(toUnitScale(take(waiting_, kBlockFrames * channels_)))));
    }
    return take(done_, in.size() / channels_ * 2);
}

Samples servedInCalls(const Samples& blocks, const std::vector<int>& call_sizes) {
    std::deque<std::int16_t> done;
    Samples out;
    std::size_t arrived = 0;
    std::size_t rendered = 0;
    for (const int size : call_sizes) {
        arrived += static_cast<std::size_t>(size);
        for (; rendered + kBlockFrames <= arrived; rendered += kBlockFrames) {
            const auto block = blocks.begin() + static_cast<std::ptrdiff_t>(2 * rendered);
            queue(done, Samples(block, block + 2 * static_cast<std::ptrdiff_t>(kBlockFrames)));
        }
        const Samples served = take(done, 2 * static_cast<std::size_t>(size));
        out.insert(out.end(), served.begin(), served.end());
    }
    return out;
}

}  // namespace model
