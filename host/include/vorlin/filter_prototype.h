#pragma once

#include <memory>
#include <string>

#include "vorlin/api.h"
#include "vorlin/filter.h"

namespace Vorlin {

/** The registry of filters, and the base class through which a filter enters it.
 *
 *  Use: a filter library holds one static object of a class derived from IAudioFilter and filterPrototype.
 *  Its constructor calls `addPrototype(this)`.
 *
 *  The registry is made at its first use, whichever library is loaded first. A prototype leaves the registry
 *  when it is destroyed, so an unloaded library leaves nothing behind. The registry does not keep a library
 *  loaded: the holder of a clone must also hold the library (see Plugin).
 *
 *  Any thread may call the static functions. If other threads create filters meanwhile, libraries must be
 *  loaded and unloaded through Plugin. */
class VORLIN_API filterPrototype {
  public:
    // Keys of IFilter::setOption.
    static constexpr char FILTER_OPTION[] = "filter_option";       // value: a JSON object
    static constexpr char VIDEO_FPS_OPTION[] = "video_fps";        // value: frames per second, a number
    static constexpr char PLAYER_SPEED_OPTION[] = "player_speed";  // value: 1.0 = normal, a number
    // Events of IAudioFilter::setDCA, which follow "<filter name>:".
    static constexpr char FILTER_VALID_RECOVERY[] = "valid_recovery";
    static constexpr char FILTER_INVALID_OVER_FPS[] = "invalid_over_fps";
    static constexpr char FILTER_INVALID_PERFORMANCE[] = "invalid_performance";

    filterPrototype() = default;
    filterPrototype(const filterPrototype&) = delete;
    filterPrototype& operator=(const filterPrototype&) = delete;
    /** Leaves the registry, if this object is in it. [any, concurrent] not real-time safe: takes a lock */
    virtual ~filterPrototype();

    /** Enters a prototype, which the caller still owns. A prototype that is not an IAudioFilter is logged and
     *  not entered.
     *  [any, concurrent] not real-time safe: takes a lock, allocates, logs */
    static void addPrototype(filterPrototype* prototype);

    /** Clones the newest prototype that supports `name`. The parameters are those of IAudioFilter::clone.
     *  @return null if no prototype supports `name`.
     *  [any, concurrent] not real-time safe: takes a lock, allocates */
    static std::unique_ptr<IAudioFilter> createFilter(const std::string& name, const IQFFrame::audioInfo& src,
                                                      const IQFFrame::audioInfo& dst, bool active);

    /** @return true if a prototype supports `name`. [any, concurrent] not real-time safe: takes a lock */
    static bool isRegistered(const std::string& name);
};

}  // namespace Vorlin
