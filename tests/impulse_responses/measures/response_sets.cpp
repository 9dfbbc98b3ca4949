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

// Design of a set: divisor, room, and direct-to-reverberant ratio of each kind of loudspeaker.
struct Setting {
    Kind kind;
    int mode;
    double divisor;
    double reverberation_time_s;
    double faded_part;
    double front_db;
    double centre_db;
    double surround_db;
};

constexpr Setting kCingoSetting{Kind::kCingo, 0, 10000.0, 0.25, 0.25, 8.0, 9.0, 6.0};
constexpr Setting kBingoSetting{Kind::kBingo, 0, 20000.0, 0.25, 0.3, 8.0, 9.0, 6.0};
constexpr Setting kModeSettings[] = {{Kind::kMode, 1, 20000.0, 0.15, 0.3, 11.0, 14.0, 9.0},
                                     {Kind::kMode, 2, 20000.0, 0.20, 0.3, 8.5, 14.0, 6.5},
                                     {Kind::kMode, 3, 20000.0, 0.27, 0.3, 6.5, 14.0, 4.5}};
constexpr double kLowFrequencyRatio_db = 20.0;
constexpr double kAudioDivisor = 24000.0;

Signal gains(const Table& table, double divisor) {
    Signal signal;
    for (const std::int16_t sample : table.samples) signal.push_back(sample / divisor);
    return signal;
}

double ratioOf(const Setting& setting, Role role) {
    switch (role) {
        case Role::kFront:
            return setting.front_db;
        case Role::kCentre:
            return setting.centre_db;
        case Role::kLowFrequency:
            return kLowFrequencyRatio_db;
        case Role::kSurround:
            return setting.surround_db;
    }
    return 0.0;
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
                               .direct_to_reverberant_db = ratioOf(setting, loudspeaker.role),
                               .ears = {gains(tables.tables[2 * i], setting.divisor),
                                        gains(tables.tables[2 * i + 1], setting.divisor)}});
    }
    return set;
}

}  // namespace

Responses compiledResponses() {
    const std::span<const TableSet> tables = compiledSets();
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
    responses.audio_stage = gains(compiledAudioStage(), kAudioDivisor);
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
