#include "speech_ratio.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <vector>

namespace sonivex_tool {
namespace {

constexpr double kLowestBand_hz = 200.0;
constexpr double kHighestBand_hz = 4000.0;
constexpr double kHighestBandOfRate = 0.45;
constexpr double kSegment_s = 0.1;
// A segment contains speech if its power is at least this share of the mean power of speech: -20 dB.
constexpr double kActiveShare = 0.01;
// Q of each of two cascaded second-order sections; the cascade is a third of an octave wide at -3 dB.
constexpr double kSectionQ = 2.78;
// If the squared correlation of speech and background in a tile reaches this, the fit cannot separate them.
constexpr double kMaxLikeness = 1.0 - 1e-9;
constexpr std::size_t kChannels = 2;

// Two cascaded resonators, each with gain 1 at the centre.
class BandPass {
  public:
    BandPass(double centre_hz, double rate_hz) {
        const double turn = 2.0 * std::numbers::pi * centre_hz / rate_hz;
        const double width = std::sin(turn) / (2.0 * kSectionQ);
        gain_ = width / (1.0 + width);
        back1_ = 2.0 * std::cos(turn) / (1.0 + width);
        back2_ = -(1.0 - width) / (1.0 + width);
    }

    double next(double x) {
        for (Section& section : sections_) {
            const double y = gain_ * (x - section.x2) + back1_ * section.y1 + back2_ * section.y2;
            section = {x, section.x1, y, section.y1};
            x = y;
        }
        return x;
    }

  private:
    struct Section {
        double x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
    };
    double gain_;
    double back1_;
    double back2_;
    std::array<Section, 2> sections_;
};

// The products of the three sounds, summed over a tile.
struct Tile {
    double speech2 = 0.0;
    double background2 = 0.0;
    double output2 = 0.0;
    double speech_background = 0.0;
    double speech_output = 0.0;
    double background_output = 0.0;

    void add(double speech, double background, double output) {
        speech2 += speech * speech;
        background2 += background * background;
        output2 += output * output;
        speech_background += speech * background;
        speech_output += speech * output;
        background_output += background * output;
    }
};

// The power of each sound, summed over tiles.
struct Powers {
    double speech_before = 0.0;
    double background_before = 0.0;
    double speech_after = 0.0;
    double background_after = 0.0;
    double output = 0.0;
    double residue = 0.0;

    void add(const Tile& tile) {
        const auto [a, b] = gains(tile);
        speech_before += tile.speech2;
        background_before += tile.background2;
        speech_after += a * a * tile.speech2;
        background_after += b * b * tile.background2;
        output += tile.output2;
        residue += std::max(0.0, tile.output2 - a * tile.speech_output - b * tile.background_output);
    }

  private:
    struct Gains {
        double speech = 0.0;
        double background = 0.0;
    };

    // Least-squares fit of the output by speech and background. A silent sound has gain 0. If the two cannot
    // be separated, the weaker one has gain 0.
    static Gains gains(const Tile& tile) {
        const double both = tile.speech2 * tile.background2;
        if (tile.speech_background * tile.speech_background >= kMaxLikeness * both) {
            const bool is_speech = tile.speech2 >= tile.background2;
            const double own = is_speech ? tile.speech2 : tile.background2;
            if (own <= 0.0) return {};
            return is_speech ? Gains{tile.speech_output / own, 0.0}
                             : Gains{0.0, tile.background_output / own};
        }
        const double determinant = both - tile.speech_background * tile.speech_background;
        return {(tile.speech_output * tile.background2 - tile.background_output * tile.speech_background) /
                    determinant,
                (tile.background_output * tile.speech2 - tile.speech_output * tile.speech_background) /
                    determinant};
    }
};

using Tiles = std::vector<Tile>;

// Returns the tiles of one channel and band, one for each whole segment.
template <typename Sample>
Tiles tilesOf(std::span<const Sample> speech, std::span<const Sample> background,
              std::span<const Sample> output, std::size_t channel, double centre_hz, int rate_hz,
              std::size_t segment_frames, std::size_t segments) {
    BandPass of_speech(centre_hz, rate_hz);
    BandPass of_background(centre_hz, rate_hz);
    BandPass of_output(centre_hz, rate_hz);
    Tiles tiles(segments);
    std::size_t at = channel;
    for (Tile& tile : tiles) {
        for (std::size_t frame = 0; frame < segment_frames; ++frame, at += kChannels) {
            tile.add(of_speech.next(static_cast<double>(speech[at])),
                     of_background.next(static_cast<double>(background[at])),
                     of_output.next(static_cast<double>(output[at])));
        }
    }
    return tiles;
}

// Returns the tiles of all bands and channels.
template <typename Sample>
std::vector<Tiles> tilesOfAllBands(std::span<const Sample> speech, std::span<const Sample> background,
                                   std::span<const Sample> output, int rate_hz) {
    const std::size_t frames = std::min({speech.size(), background.size(), output.size()}) / kChannels;
    const auto segment_frames = static_cast<std::size_t>(std::max(1.0, std::round(kSegment_s * rate_hz)));
    const std::size_t segments = frames / segment_frames;
    std::vector<Tiles> bands;
    const double highest_hz = std::min(kHighestBand_hz, kHighestBandOfRate * rate_hz);
    const double third_octave = std::cbrt(2.0);
    double centre_hz = kLowestBand_hz * std::sqrt(third_octave);
    while (centre_hz < highest_hz) {
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            bands.push_back(
                tilesOf(speech, background, output, channel, centre_hz, rate_hz, segment_frames, segments));
        }
        centre_hz *= third_octave;
    }
    return bands;
}

// Returns, for each segment, whether the sound whose power `speaker` selects is active in it.
std::vector<bool> activeSegments(const std::vector<Tiles>& bands, double Tile::*speaker) {
    const std::size_t segments = bands.empty() ? 0 : bands.front().size();
    std::vector<double> power(segments, 0.0);
    double total = 0.0;
    for (const Tiles& tiles : bands) {
        for (std::size_t segment = 0; segment < segments; ++segment) {
            power[segment] += tiles[segment].*speaker;
            total += tiles[segment].*speaker;
        }
    }
    std::vector<bool> active(segments);
    for (std::size_t segment = 0; segment < segments; ++segment) {
        active[segment] =
            power[segment] > 0.0 && power[segment] * static_cast<double>(segments) >= kActiveShare * total;
    }
    return active;
}

Powers powersWhere(const std::vector<bool>& active, const std::vector<Tiles>& bands) {
    Powers powers;
    for (const Tiles& tiles : bands) {
        for (std::size_t segment = 0; segment < active.size(); ++segment) {
            if (active[segment]) powers.add(tiles[segment]);
        }
    }
    return powers;
}

double decibels(double ratio) {
    return 10.0 * std::log10(ratio);
}

bool isPower(double value) {
    return value > 0.0 && std::isfinite(value);
}

template <typename Sample>
SpeechRatio compare(std::span<const Sample> speech, std::span<const Sample> background,
                    std::span<const Sample> output, int rate_hz) {
    const std::vector<Tiles> bands = tilesOfAllBands(speech, background, output, rate_hz);
    const std::vector<bool> active = activeSegments(bands, &Tile::speech2);
    const Powers powers = powersWhere(active, bands);
    if (!isPower(powers.speech_before) || !isPower(powers.background_before) ||
        !isPower(powers.speech_after) || !isPower(powers.background_after) || !isPower(powers.output))
        return {};
    return {static_cast<std::size_t>(std::count(active.begin(), active.end(), true)),
            decibels(powers.speech_before / powers.background_before),
            decibels(powers.speech_after / powers.background_after),
            powers.residue / powers.output,
            powers.speech_after / powers.output,
            powers.background_after / powers.output};
}

}  // namespace

SpeechRatio compareSpeech(std::span<const float> speech, std::span<const float> background,
                          std::span<const float> output, int rate_hz) {
    return compare(speech, background, output, rate_hz);
}

SpeechRatio compareSpeech(std::span<const std::int16_t> speech, std::span<const std::int16_t> background,
                          std::span<const std::int16_t> output, int rate_hz) {
    return compare(speech, background, output, rate_hz);
}

double ratioOfParts_db(std::span<const float> speech, std::span<const float> background,
                       std::span<const float> speaker, int rate_hz) {
    const std::vector<Tiles> bands = tilesOfAllBands(speech, background, speaker, rate_hz);
    const Powers powers = powersWhere(activeSegments(bands, &Tile::output2), bands);
    if (!isPower(powers.speech_before) || !isPower(powers.background_before)) return 0.0;
    return decibels(powers.speech_before / powers.background_before);
}

}  // namespace sonivex_tool
