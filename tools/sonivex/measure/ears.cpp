#include "ears.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "audio_source.h"
#include "failure.h"
#include "format_converter.h"
#include "interrupt.h"

namespace sonivex_tool {
namespace {

struct StereoSamples {
    int rate_hz = 0;
    DamageReport damage;
    std::vector<double> left;
    std::vector<double> right;
};

void append(StereoSamples& samples, const FramePtr& frame) {
    if (frame == nullptr) return;
    const auto plane = [&](int channel) {
        return std::span(reinterpret_cast<const double*>(frame->extended_data[channel]),
                         static_cast<std::size_t>(frame->nb_samples));
    };
    samples.left.insert(samples.left.end(), plane(0).begin(), plane(0).end());
    samples.right.insert(samples.right.end(), plane(1).begin(), plane(1).end());
}

StereoSamples readStereo(const std::string& path) {
    AudioSource source({.path = path});
    AudioSpec spec = source.info().spec;
    if (spec.channels() != 2) {
        throw Failure(ExitCode::UnsupportedAudio,
                      "cannot measure \"" + path +
                          "\": it is not stereo (channels: " + std::to_string(spec.channels()) + ")");
    }
    spec.format = AV_SAMPLE_FMT_DBLP;
    FormatConverter converter(spec);
    StereoSamples samples;
    samples.rate_hz = spec.rate_hz;
    while (FramePtr frame = source.read()) {
        throwIfInterrupted();
        append(samples, converter.convert(std::move(frame)));
    }
    append(samples, converter.flush());
    samples.damage = source.damageReport();
    return samples;
}

// Parses all of `text`. Returns false if it is not a finite number.
bool parseSeconds(const std::string& text, double& seconds) {
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    return error == std::errc() && end == text.data() + text.size() && std::isfinite(seconds);
}

// Formats the magnitude with its unit.
std::string withUnit(double value, int decimals, const std::string& unit) {
    std::array<char, 64> number{};
    (void)std::snprintf(number.data(), number.size(), "%.*f ", decimals, std::fabs(value));
    return number.data() + unit;
}

const char* sideOf(double value) {
    return value > 0.0 ? "left" : value < 0.0 ? "right" : "neither";
}

constexpr char kDegrees[] = " deg";

// Formats an angle with its sign, or as "0" if it rounds to 0.
std::string signedAngle(double angle_deg) {
    std::array<char, 64> text{};
    const double rounded_deg = std::round(angle_deg);
    (void)std::snprintf(text.data(), text.size(), rounded_deg == 0.0 ? "0" : "%+.0f", rounded_deg);
    return text.data();
}

// The cells of the model of hearing.
struct Angles {
    std::string angle;
    std::string by_delay;
    std::string clarity;
    std::string by_level;
};

Angles anglesOf(const std::optional<LateralAngle>& lateral) {
    if (!lateral) return {"-", "-", "-", "-"};
    std::array<char, 64> clarity{};
    (void)std::snprintf(clarity.data(), clarity.size(), "%.2f", lateral->clarity);
    return {signedAngle(lateral->angle_deg) + kDegrees, signedAngle(lateral->by_delay_deg) + kDegrees,
            clarity.data(),
            signedAngle(lateral->lowest_by_level_deg) + " to " + signedAngle(lateral->highest_by_level_deg) +
                kDegrees};
}

std::string row(std::size_t name_width, const std::string& name, const std::string& heard,
                const std::string& leads, const std::string& delay, const std::string& louder,
                const std::string& level, const Angles& angles) {
    std::array<char, 128> rest{};
    (void)std::snprintf(rest.data(), rest.size(), "  %-7s  %-8s %6s  %-8s %7s  %8s  %8s  %7s  %14s",
                        heard.c_str(), leads.c_str(), delay.c_str(), louder.c_str(), level.c_str(),
                        angles.angle.c_str(), angles.by_delay.c_str(), angles.clarity.c_str(),
                        angles.by_level.c_str());
    std::string line = name + std::string(name_width - name.size(), ' ') + rest.data();
    line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
}

}  // namespace

bool parseSegment(const std::string& text, Segment& segment) {
    const std::size_t equals = text.rfind('=');
    if (equals == std::string::npos || equals == 0) return false;
    const std::size_t dash = text.find('-', equals + 1);
    if (dash == std::string::npos) return false;
    segment.name = text.substr(0, equals);
    return parseSeconds(text.substr(equals + 1, dash - equals - 1), segment.from_s) &&
           parseSeconds(text.substr(dash + 1), segment.to_s) && segment.from_s >= 0.0 &&
           segment.to_s > segment.from_s;
}

EarsReport measureEars(const std::string& path, const std::vector<Segment>& segments) {
    const StereoSamples samples = readStereo(path);
    const auto size = static_cast<double>(samples.left.size());
    std::vector<Segment> wanted = segments;
    if (wanted.empty()) wanted.push_back({"whole file", 0.0, size / samples.rate_hz});
    EarsReport report;
    report.damage = samples.damage;
    for (const Segment& segment : wanted) {
        const double from = std::round(segment.from_s * samples.rate_hz);
        const double to = std::round(segment.to_s * samples.rate_hz);
        if (to > size || from >= to) {
            throw Failure(ExitCode::Usage, "cannot measure --segment \"" + segment.name + "\" of \"" + path +
                                               "\": it is empty or extends beyond the end of the file at " +
                                               withUnit(size / samples.rate_hz, 2, "s"));
        }
        const auto first = static_cast<std::size_t>(from);
        const auto count = static_cast<std::size_t>(to) - first;
        const auto left = std::span(samples.left).subspan(first, count);
        const auto right = std::span(samples.right).subspan(first, count);
        SegmentEars& row = report.rows.emplace_back();
        row.segment = segment;
        row.ears = compareEars(left, right, samples.rate_hz);
        if (!row.ears.is_silent) row.lateral = lateralAngle(left, right, samples.rate_hz);
    }
    return report;
}

std::string asText(const EarsReport& report) {
    std::size_t name_width = std::string("segment").size();
    for (const SegmentEars& entry : report.rows) name_width = std::max(name_width, entry.segment.name.size());
    std::string text = row(name_width, "segment", "heard", "leads", "by", "louder", "by",
                           {"angle", "by delay", "clarity", "by level"});
    for (const auto& [segment, ears, lateral] : report.rows) {
        if (ears.is_silent) {
            text += row(name_width, segment.name, heardSide(ears), "", "", "", "", {});
            continue;
        }
        text += row(name_width, segment.name, heardSide(ears), sideOf(ears.delay_us),
                    withUnit(ears.delay_us, 0, "us"), sideOf(ears.level_db), withUnit(ears.level_db, 1, "dB"),
                    anglesOf(lateral));
    }
    return text;
}

std::string asJson(const EarsReport& report) {
    nlohmann::ordered_json array = nlohmann::ordered_json::array();
    const auto figure = [](const std::optional<LateralAngle>& lateral, double LateralAngle::*member) {
        return lateral ? nlohmann::ordered_json((*lateral).*member) : nlohmann::ordered_json();
    };
    for (const auto& [segment, ears, lateral] : report.rows) {
        array.push_back({{"name", segment.name},
                         {"from_s", segment.from_s},
                         {"to_s", segment.to_s},
                         {"damaged", report.damage.isDamaged()},
                         {"heard", heardSide(ears)},
                         {"left_leads_us", ears.delay_us},
                         {"left_louder_db", ears.level_db},
                         {"likeness", ears.likeness},
                         {"angle_deg", figure(lateral, &LateralAngle::angle_deg)},
                         {"angle_by_delay_deg", figure(lateral, &LateralAngle::by_delay_deg)},
                         {"clarity", figure(lateral, &LateralAngle::clarity)},
                         {"angle_by_level_deg", figure(lateral, &LateralAngle::by_level_deg)},
                         {"lowest_by_level_deg", figure(lateral, &LateralAngle::lowest_by_level_deg)},
                         {"highest_by_level_deg", figure(lateral, &LateralAngle::highest_by_level_deg)}});
    }
    return array.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

}  // namespace sonivex_tool
