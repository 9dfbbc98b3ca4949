#include "source_report.h"

#include <array>
#include <cstdio>

namespace sonivex_tool {
namespace {

std::string secondsText(double seconds) {
    std::array<char, 64> text{};
    (void)std::snprintf(text.data(), text.size(), "%.3f s", seconds);
    return text.data();
}

std::string counted(uint64_t count, const std::string& one, const std::string& many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string damageText(const DamageReport& damage) {
    std::string text;
    const auto add = [&text](const std::string& part) { text += (text.empty() ? "" : "; ") + part; };
    if (damage.read_errors > 0) add("it cannot be read in " + counted(damage.read_errors, "place", "places"));
    if (damage.corrupt_packets > 0)
        add(counted(damage.corrupt_packets, "packet is incomplete or corrupt",
                    "packets are incomplete or corrupt"));
    if (damage.decode_errors > 0)
        add(counted(damage.decode_errors, "packet failed", "packets failed") + " to decode");
    if (damage.filled_s > 0.0) add(secondsText(damage.filled_s) + " of silence replace what is lost");
    if (damage.missing_end_s > 0.0)
        add("it ends " + secondsText(damage.missing_end_s) + " before its stated length");
    else if (damage.ends_prematurely)
        add("it is cut off");
    return text;
}

}  // namespace

bool DamageReport::isDamaged() const {
    return read_errors > 0 || corrupt_packets > 0 || decode_errors > 0 || filled_s > 0.0 ||
           missing_end_s > 0.0 || ends_prematurely;
}

bool DamageReport::isLossKnown() const {
    if (ends_prematurely) return missing_end_s > 0.0;
    return !isDamaged() || lost_s() > 0.0;
}

std::string DamageReport::lossText() const {
    return isLossKnown() ? secondsText(lost_s()) : "an unknown part";
}

std::string damageSentence(const std::string& path, const DamageReport& damage) {
    return "\"" + path + "\" is damaged: " + damageText(damage);
}

std::vector<std::string> sentencesOn(const std::string& path, const TimelineReport& timeline,
                                     const DamageReport& damage) {
    const std::string file = "\"" + path + "\"";
    std::vector<std::string> lines;
    if (timeline.lead_in_s > 0.0) {
        lines.push_back("the audio of " + file + " begins late; " + secondsText(timeline.lead_in_s) +
                        " of silence precede it");
    }
    if (timeline.gaps > 0) {
        lines.push_back("the timestamps of " + file + " leave " + counted(timeline.gaps, "gap", "gaps") +
                        "; " + secondsText(timeline.filled_s) + " of silence fill " +
                        (timeline.gaps == 1 ? "it" : "them"));
    }
    if (timeline.overlaps > 0) {
        lines.push_back("the timestamps of " + file + " overlap in " +
                        counted(timeline.overlaps, "place", "places") + "; " + secondsText(timeline.cut_s) +
                        " of audio were cut");
    }
    if (timeline.jumps > 0) {
        lines.push_back("the timestamps of " + file + " jump in " +
                        counted(timeline.jumps, "place", "places") +
                        " by more than a gap or an overlap; the audio goes on there without a break");
    }
    if (damage.isDamaged()) lines.push_back(damageSentence(path, damage));
    return lines;
}

}  // namespace sonivex_tool
