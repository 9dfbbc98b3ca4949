#pragma once

#include <memory>
#include <string>

#include "vorlin/api.h"
#include "vorlin/filter.h"

namespace Vorlin {

/** The registry of filters, and the base by which a filter enters it.
 *
 *  A filter library holds one static object derived from IAudioFilter and filterPrototype, whose constructor
 *  calls `addPrototype(this)`. The registry is made at its first use, whichever library is loaded first; a
 *  prototype leaves it when it is destroyed, so an unloaded library leaves nothing behind. The registry does
 *  not keep a library loaded: whoever holds a clone holds its library (see Plugin). Any thread may call the
 *  static functions. Where other threads create filters meanwhile, libraries are loaded and unloaded through
 *  Plugin. */
class VORLIN_API filterPrototype {
  public:
    // Keys of IFilter::setOption.
    static constexpr char FILTER_OPTION[] = "filter_option";       // value: a JSON object
    static constexpr char VIDEO_FPS_OPTION[] = "video_fps";        // value: frames per second, a number
    static constexpr char PLAYER_SPEED_OPTION[] = "player_speed";  // value: 1.0 = normal, a number
    // Events of IAudioFilter::setDCA, behind "<filter name>:".
    static constexpr char FILTER_VALID_RECOVERY[] = "valid_recovery";
    static constexpr char FILTER_INVALID_OVER_FPS[] = "invalid_over_fps";
    static constexpr char FILTER_INVALID_PERFORMANCE[] = "invalid_performance";

    filterPrototype() = default;
    filterPrototype(const filterPrototype&) = delete;
    filterPrototype& operator=(const filterPrototype&) = delete;
    /** Leaves the registry if this object was in it. */
    virtual ~filterPrototype();

    /** Enter a prototype, which must also be an IAudioFilter, and stays owned by the caller. */
    static void addPrototype(filterPrototype* prototype);

    /** Clone the newest prototype that supports `name`. @return null when there is none. */
    static std::unique_ptr<IAudioFilter> createFilter(const std::string& name, const IQFFrame::audioInfo& src,
                                                      const IQFFrame::audioInfo& dst, bool active);

    /** Whether a prototype supports `name`. */
    static bool isRegistered(const std::string& name);
};

}  // namespace Vorlin
