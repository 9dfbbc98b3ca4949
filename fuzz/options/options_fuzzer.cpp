// Sets the options of one filter, line by line. The first character of a line tells which call it makes:
//
//     o{"enable_surround": true}     FILTER_OPTION
//     f23.976                        VIDEO_FPS_OPTION
//     s1.5                           PLAYER_SPEED_OPTION
//     v, i                           setInvalid(false), setInvalid(true)
//     c<eight bytes>                 checkTimeConsume
//     anything else                  an option that is no known key, which the filter ignores
//
// A line ends at '\n', which JSON also permits between its words but never needs.

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <string>

#include "SonivexFilter.h"
#include "support/byte_stream.h"
#include "support/promise.h"
#include "vorlin/log.h"

namespace Vorlin {

struct SonivexFilterPeer {
    /** All that an option can change. */
    struct State {
        int type, mode, limiter;
        bool surround, dialogue, normalizer, dump;
        double voice;
        int fps, speed;
        bool operator==(const State&) const = default;
    };
    static State stateOf(const sonivexFilter& filter) {
        return {filter.mSurroundType,   filter.mSurroundMode,   filter.mSurroundLimiter,
                filter.mEnableSurround, filter.mEnableDialogue, filter.mEnableNormalizer,
                filter.mEnableDump,     filter.mVoice,          filter.mFps,
                filter.mSpeed};
    }
    static bool isInvalid(const sonivexFilter& filter) { return filter.mInvalid; }
};

}  // namespace Vorlin

namespace {

using Filter = Vorlin::sonivexFilter;
using Peer = Vorlin::SonivexFilterPeer;
using fuzz::require;

constexpr int kOverLimit_fps = 62;

void requireSoundState(const Filter& filter) {
    const Peer::State state = Peer::stateOf(filter);
    require(state.type == 1 || state.type == 13, "the surround type is 1 or 13");
    require(state.mode >= 1 && state.mode <= 3, "the room is 1, 2 or 3");
    require(state.voice >= 1.0, "the voice level is at least 1");
    require(int{state.surround} + int{state.dialogue} + int{state.normalizer} <= 1,
            "one effect at most is on");
}

void setEffects(Filter& filter, const std::string& json) {
    const Peer::State before = Peer::stateOf(filter);
    const bool is_taken = filter.setOption(Filter::FILTER_OPTION, json, "");
    const Peer::State after = Peer::stateOf(filter);
    if (!is_taken) require(after == before, "a text that is not JSON changes nothing");
    require(filter.setOption(Filter::FILTER_OPTION, json, "x") == is_taken,
            "the same text gets the same answer");
    require(Peer::stateOf(filter) == after, "setting the same options again changes nothing");
}

int truncated(double value) {
    if (std::isnan(value)) return 0;
    return static_cast<int>(
        std::clamp(value, double{std::numeric_limits<int>::min()}, double{std::numeric_limits<int>::max()}));
}

void setNumber(Filter& filter, bool is_speed, const std::string& text) {
    char* end = nullptr;
    double expected = std::strtod(text.c_str(), &end);
    const bool is_number = end != text.c_str();
    if (is_speed) expected = static_cast<float>(expected);
    Peer::State state = Peer::stateOf(filter);
    try {
        const bool is_taken =
            filter.setOption(is_speed ? Filter::PLAYER_SPEED_OPTION : Filter::VIDEO_FPS_OPTION, text, "");
        require(is_taken && is_number, "a number is taken, and nothing else");
        (is_speed ? state.speed : state.fps) = truncated(expected);
    } catch (const std::invalid_argument&) {
        require(!is_number, "a number is no invalid argument");
    }
    require(Peer::stateOf(filter) == state, "a number changes itself alone");
    const bool is_over = std::int64_t{state.fps} * state.speed >= kOverLimit_fps;
    require(filter.isOverFps() == is_over, "62 frames a second and more are too many");
}

void checkTime(Filter& filter, std::string_view text) {
    const bool was_invalid = Peer::isInvalid(filter);
    fuzz::ByteStream bytes(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
    const Peer::State state = Peer::stateOf(filter);
    filter.checkTimeConsume(bytes.longNumber());
    require(Peer::stateOf(filter) == state, "the load guard changes no option");
    if (was_invalid) require(Peer::isInvalid(filter), "the load guard never sets a filter valid");
}

void callWith(Filter& filter, std::string_view line) {
    if (line.empty()) return;
    const std::string value(line.substr(1));
    switch (line.front()) {
        case 'o':
            setEffects(filter, value);
            return;
        case 'f':
            setNumber(filter, false, value);
            return;
        case 's':
            setNumber(filter, true, value);
            return;
        case 'v':
            filter.setInvalid(false);
            return;
        case 'i':
            filter.setInvalid(true);
            return;
        case 'c':
            checkTime(filter, value);
            return;
        default: {
            const std::string key(line);
            if (key == Filter::FILTER_OPTION || key == Filter::VIDEO_FPS_OPTION ||
                key == Filter::PLAYER_SPEED_OPTION)
                return;
            const Peer::State before = Peer::stateOf(filter);
            require(filter.setOption(key, value, value), "an unknown key is ignored");
            require(Peer::stateOf(filter) == before, "an unknown key changes nothing");
        }
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    // Every message is formatted, because the texts of the options stand in the messages.
    static const bool has_log = [] {
        Vorlin::setLogLevel(Vorlin::LOG_DEBUG);
        Vorlin::setLogSink([](int, const std::string&, const std::string&) {});
        return true;
    }();
    (void)has_log;

    Filter filter({}, {}, false);
    filter.setDCA([](int code, const std::string& event) {
        constexpr std::array kEvents = {Filter::FILTER_VALID_RECOVERY, Filter::FILTER_INVALID_OVER_FPS,
                                        Filter::FILTER_INVALID_PERFORMANCE};
        require(code == 0 && event.starts_with("SonivexFilter:"), "an event begins with the filter's name");
        const std::string name = event.substr(std::string("SonivexFilter:").size());
        require(std::find(kEvents.begin(), kEvents.end(), name) != kEvents.end(), "the event is a known one");
    });
    fuzz::ByteStream stream(bytes, size);
    while (!stream.isEmpty()) {
        callWith(filter, stream.textUntil('\n'));
        requireSoundState(filter);
    }
    return 0;
}
