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
/** A segment counts as speech if it has this share of the mean power of speech: 20 dB below it. */
constexpr double kActiveShare = 0.01;
/** Of two second-order sections in a row, so that the whole is a third of an octave wide at -3 dB. */
constexpr double kSectionQ = 2.78;
/** Speech and background of a tile that are this much alike cannot be told apart. */
constexpr double kGreatestLikeness = 1.0 - 1e-9;
constexpr std::size_t kChannels = 2;

/** A resonator with gain 1 at its centre, run twice. */
class BandPass {
  public:
    BandPass(double centre_hz, double rate_hz) {
        const double turn = 2.0 * std::numbers::pi * centre_hz / rate_hz;
        const double width = std::sin(turn) / (2.0 * kSectionQ);
        mGain = width / (1.0 + width);
        mBack1 = 2.0 * std::cos(turn) / (1.0 + width);
        mBack2 = -(1.0 - width) / (1.0 + width);
    }

    double next(double x) {
        for (Section& section : mSections) {
            const double y = mGain * (x - section.x2) + mBack1 * section.y1 + mBack2 * section.y2;
            section = {x, section.x1, y, section.y1};
            x = y;
        }
        return x;
    }

  private:
    struct Section {
        double x1 = 0.0, x2 = 0.0, y1 = 0.0, y2 = 0.0;
    };
    double mGain;
    double mBack1;
    double mBack2;
    std::array<Section, 2> mSections;
};

/** Products of the three sounds, summed over a tile. */
struct Tile {
    double speech2 = 0.0;
    double background2 = 0.0;
    double output2 = 0.0;
    double speechBackground = 0.0;
    double speechOutput = 0.0;
    double backgroundOutput = 0.0;

    void add(double speech, double background, double output) {
        speech2 += speech * speech;
        background2 += background * background;
        output2 += output * output;
        speechBackground += speech * background;
        speechOutput += speech * output;
        backgroundOutput += background * output;
    }
};

/** Power of each sound, summed over tiles. */
struct Powers {
    double speechBefore = 0.0;
    double backgroundBefore = 0.0;
    double speechAfter = 0.0;
    double backgroundAfter = 0.0;
    double output = 0.0;
    double residue = 0.0;

    void add(const Tile& tile) {
        const auto [a, b] = gains(tile);
        speechBefore += tile.speech2;
        backgroundBefore += tile.background2;
        speechAfter += a * a * tile.speech2;
        backgroundAfter += b * b * tile.background2;
        output += tile.output2;
        residue += std::max(0.0, tile.output2 - a * tile.speechOutput - b * tile.backgroundOutput);
    }

  private:
    struct Gains {
        double speech = 0.0;
        double background = 0.0;
    };

    /** The least squares fit; what is silent, or cannot be told from the other, has gain 0. */
    static Gains gains(const Tile& tile) {
        const double both = tile.speech2 * tile.background2;
        if (tile.speechBackground * tile.speechBackground >= kGreatestLikeness * both) {
            const bool isSpeech = tile.speech2 >= tile.background2;
            const double own = isSpeech ? tile.speech2 : tile.background2;
            if (own <= 0.0) return {};
            return isSpeech ? Gains{tile.speechOutput / own, 0.0} : Gains{0.0, tile.backgroundOutput / own};
        }
        const double determinant = both - tile.speechBackground * tile.speechBackground;
        return {
            (tile.speechOutput * tile.background2 - tile.backgroundOutput * tile.speechBackground) /
                determinant,
            (tile.backgroundOutput * tile.speech2 - tile.speechOutput * tile.speechBackground) / determinant};
    }
};

using Tiles = std::vector<Tile>;

/** Tiles of one channel and band, one for each whole segment. */
template <typename Sample>
Tiles tilesOf(std::span<const Sample> speech, std::span<const Sample> background,
              std::span<const Sample> output, std::size_t channel, double centre_hz, int rate_hz,
              std::size_t segmentFrames, std::size_t segments) {
    BandPass ofSpeech(centre_hz, rate_hz);
    BandPass ofBackground(centre_hz, rate_hz);
    BandPass ofOutput(centre_hz, rate_hz);
    Tiles tiles(segments);
    std::size_t at = channel;
    for (Tile& tile : tiles) {
        for (std::size_t frame = 0; frame < segmentFrames; ++frame, at += kChannels) {
            tile.add(ofSpeech.next(static_cast<double>(speech[at])),
                     ofBackground.next(static_cast<double>(background[at])),
                     ofOutput.next(static_cast<double>(output[at])));
        }
    }
    return tiles;
}

/** Tiles of all bands and channels. */
template <typename Sample>
std::vector<Tiles> tilesOfAllBands(std::span<const Sample> speech, std::span<const Sample> background,
                                   std::span<const Sample> output, int rate_hz) {
    const std::size_t frames = std::min({speech.size(), background.size(), output.size()}) / kChannels;
    const auto segmentFrames = static_cast<std::size_t>(std::max(1.0, std::round(kSegment_s * rate_hz)));
    const std::size_t segments = frames / segmentFrames;
    std::vector<Tiles> bands;
    const double highest_hz = std::min(kHighestBand_hz, kHighestBandOfRate * rate_hz);
    const double thirdOctave = std::cbrt(2.0);
    for (double centre_hz = kLowestBand_hz * std::sqrt(thirdOctave); centre_hz < highest_hz;
         centre_hz *= thirdOctave) {
        for (std::size_t channel = 0; channel < kChannels; ++channel) {
            bands.push_back(
                tilesOf(speech, background, output, channel, centre_hz, rate_hz, segmentFrames, segments));
        }
    }
    return bands;
}

/** @param speaker power of the one whose activity counts. */
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
    if (!isPower(powers.speechBefore) || !isPower(powers.backgroundBefore) || !isPower(powers.speechAfter) ||
        !isPower(powers.backgroundAfter) || !isPower(powers.output))
        return {};
    return {static_cast<std::size_t>(std::count(active.begin(), active.end(), true)),
            decibels(powers.speechBefore / powers.backgroundBefore),
            decibels(powers.speechAfter / powers.backgroundAfter), powers.residue / powers.output};
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
    if (!isPower(powers.speechBefore) || !isPower(powers.backgroundBefore)) return 0.0;
    return decibels(powers.speechBefore / powers.backgroundBefore);
}

}  // namespace sonivex_tool
