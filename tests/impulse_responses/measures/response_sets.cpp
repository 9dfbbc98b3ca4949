#include "response_sets.h"

#include <span>

#include "compiled_tables.h"

namespace response_quality {
namespace {

struct Loudspeaker {
    Role role;
    double azimuth_deg;
};

// Azimuths of ITU-R BS.775. The back pair of eight channels comes before the side pair.
constexpr Loudspeaker kTwoChannels[] = {{Role::kFront, 30.0}, {Role::kFront, -30.0}};
constexpr Loudspeaker kBingo51[] = {{Role::kFront, 30.0},     {Role::kFront, -30.0},
                                    {Role::kCentre, 0.0},     {Role::kLowFrequency, 0.0},
                                    {Role::kSurround, 110.0}, {Role::kSurround, -110.0}};
constexpr Loudspeaker kBingo71[] = {
    {Role::kFront, 30.0},     {Role::kFront, -30.0},     {Role::kCentre, 0.0},    {Role::kLowFrequency, 0.0},
    {Role::kSurround, 140.0}, {Role::kSurround, -140.0}, {Role::kSurround, 90.0}, {Role::kSurround, -90.0}};
constexpr Loudspeaker kMode51[] = {{Role::kFront, 30.0},
                                   {Role::kFront, -30.0},
                                   {Role::kCentre, 0.0},
                                   {Role::kSurround, 110.0},
                                   {Role::kSurround, -110.0}};
constexpr Loudspeaker kMode71[] = {
    {Role::kFront, 30.0},      {Role::kFront, -30.0},   {Role::kCentre, 0.0},    {Role::kSurround, 140.0},
    {Role::kSurround, -140.0}, {Role::kSurround, 90.0}, {Role::kSurround, -90.0}};

// Divisor and room of a set.
struct Setting {
    Kind kind;
    int mode;
    double divisor;
    double reverberation_time_s;
    double faded_part;
};

constexpr Setting kCingoSetting{Kind::kCingo, 0, 10000.0, 0.25, 0.25};
constexpr Setting kBingoSetting{Kind::kBingo, 0, 20000.0, 0.25, 0.3};
constexpr Setting kModeSettings[] = {{Kind::kMode, 1, 20000.0, 0.15, 0.3},
                                     {Kind::kMode, 2, 20000.0, 0.20, 0.3},
                                     {Kind::kMode, 3, 20000.0, 0.27, 0.3}};
constexpr double kAudioDivisor = 24000.0;

Signal gains(const Table& table, double divisor) {
    Signal signal;
    for (const std::int16_t sample : table.samples) signal.push_back(sample / divisor);
    return signal;
}

ResponseSet makeSet(const TableSet& tables, const Setting& setting,
                    std::span<const Loudspeaker> loudspeakers) {
    ResponseSet set{.name = std::string(tables.name),
                    .kind = setting.kind,
                    .has_two_channels = loudspeakers.size() == 2,
                    .mode = setting.mode,
                    .reverberation_time_s = setting.reverberation_time_s,
                    .faded_part = setting.faded_part,
                    .sources = {}};
    for (std::size_t i = 0; i < loudspeakers.size(); ++i) {
        const Loudspeaker& loudspeaker = loudspeakers[i];
        set.sources.push_back({.name = set.name + " source " + std::to_string(i + 1),
                               .role = loudspeaker.role,
                               .azimuth_deg = loudspeaker.azimuth_deg,
                               .ears = {gains(tables.tables[2 * i], setting.divisor),
                                        gains(tables.tables[2 * i + 1], setting.divisor)}});
    }
    return set;
}

}  // namespace

Responses compiledResponses() {
    return responsesOf(compiledSets(), compiledAudioStage());
}

Responses responsesOf(std::span<const TableSet> tables, const Table& audio_stage) {
    Responses responses;
    responses.sets.push_back(makeSet(tables[0], kCingoSetting, kTwoChannels));
    responses.sets.push_back(makeSet(tables[1], kBingoSetting, kBingo51));
    responses.sets.push_back(makeSet(tables[2], kBingoSetting, kBingo71));
    const std::span<const Loudspeaker> layouts[] = {kTwoChannels, kMode51, kMode71};
    std::size_t next = 3;
    for (const std::span<const Loudspeaker> layout : layouts) {
        for (const Setting& setting : kModeSettings) {
            responses.sets.push_back(makeSet(tables[next], setting, layout));
            ++next;
        }
    }
    responses.audio_stage = gains(audio_stage, kAudioDivisor);
    return responses;
}

ResponseSet withAudioStage(const ResponseSet& set, const Signal& audio_stage) {
    ResponseSet heard = set;
    if (set.kind != Kind::kMode) return heard;
    for (Source& source : heard.sources) {
        for (Signal& ear : source.ears) ear = convolve(ear, audio_stage);
    }
    return heard;
}

ResponseSet frontPair(const ResponseSet& set) {
    ResponseSet pair = set;
    pair.sources.resize(2);
    return pair;
}

Ears sumOfFrontPair(const ResponseSet& set) {
    Ears sum = set.sources[0].ears;
    for (std::size_t ear = 0; ear < 2; ++ear) {
        const Signal& second = set.sources[1].ears[ear];
        for (std::size_t n = 0; n < sum[ear].size(); ++n) sum[ear][n] += second[n];
    }
    return sum;
}

bool feedsEachEarItsOwnChannel(const ResponseSet& set) {
    return set.kind == Kind::kMode && set.has_two_channels;
}

bool isCentral(const Source& source) {
    return source.role == Role::kCentre || source.role == Role::kLowFrequency;
}

std::vector<std::array<std::size_t, 2>> mirrorPairs(const ResponseSet& set) {
    std::vector<std::array<std::size_t, 2>> pairs;
    for (std::size_t i = 0; i + 1 < set.sources.size(); ++i) {
        const double azimuth_deg = set.sources[i].azimuth_deg;
        if (azimuth_deg > 0.0 && set.sources[i + 1].azimuth_deg == -azimuth_deg) pairs.push_back({i, i + 1});
    }
    return pairs;
}

}  // namespace response_quality
