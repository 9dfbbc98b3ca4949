// The options of the filter, read by a JSON reader of its own. Independent of the filter and of the library
// that it reads JSON with.
#pragma once

#include <string>
#include <string_view>

namespace test {

/** The effects, numbered as FilterTiming::effect does: of several, the one with the lowest number counts. */
enum class ModelEffect { kNone = 0, kDialogue = 1, kSurround = 2, kNormalizer = 3 };

/** Holds the settings that the options of a filter amount to. A filter starts with these values. */
struct OptionState {
    int surround_type = 1;
    int surround_mode = 1;
    int surround_limiter = 1;
    double voice = 1.0;
    ModelEffect effect = ModelEffect::kNone;
    bool is_dumped = false;

    bool operator==(const OptionState&) const = default;
};

/** Follows the options of one filter. */
class OptionModel {
  public:
    /** Takes a text for FILTER_OPTION, as docs/options.md tells. @return false if it is not JSON. */
    bool set(std::string_view text);

    const OptionState& state() const { return state_; }
    /** @return the effect that processes a stream, kNone if it passes untouched. */
    ModelEffect effectFor(int channels, int rate_hz) const;

  private:
    OptionState state_;
};

}  // namespace test
