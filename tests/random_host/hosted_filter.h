#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "random_host/filter_model.h"
#include "random_host/random_frames.h"
#include "vorlin/effect_timing.h"
#include "vorlin/filter.h"

namespace test {

/** Counts frames by their fate, and the sound in them. */
struct HostCounts {
    std::uint64_t pushed = 0;  // taken by a filter
    std::uint64_t refused = 0;
    std::uint64_t pulled = 0;
    std::uint64_t processed = 0;    // of those pulled
    std::uint64_t given_up = 0;     // with a log line
    std::uint64_t thrown_away = 0;  // by a flush or with their filter
    std::uint64_t flushes = 0;
    std::uint64_t filters = 0;  // made
    std::uint64_t streams = 0;  // changes of the stream
    std::uint64_t events = 0;   // sent by a filter
    double audio_s = 0;         // in frames that were taken

    HostCounts& operator+=(const HostCounts& more);
};

/** One filter, and everything that its host knows of it. After each call it checks what the filter promises.
 *  */
class HostedFilter {
  public:
    /** @param counts must outlive this object. */
    HostedFilter(std::unique_ptr<Vorlin::IAudioFilter> filter, bool is_active, HostCounts& counts);
    ~HostedFilter();
    HostedFilter(const HostedFilter&) = delete;
    HostedFilter& operator=(const HostedFilter&) = delete;

    Vorlin::IAudioFilter& filter() { return *filter_; }
    bool isActive() const { return is_active_; }

    void push(RandomFrame made);
    /** Pulls once. @return whether a frame came out.
     *  @param into_full whether the frame replaces the one that came out before. */
    bool pull(bool into_full);
    void flush();
    void setInvalid(bool is_invalid);
    /** Sets the options of the effects. @return whether the filter took the text. */
    bool setOptions(const std::string& text);
    /** Sets a number that may be none. */
    void setNumber(const char* key, const std::string& text);
    void checkTimeConsume(std::uint64_t elapsed_ms);
    /** Installs a callback, or none, that answers the filter's events.
     *  @param obeys whether it sets the filter invalid, as a player does. */
    void listen(bool hears, bool obeys);
    /** Flushes the filter and lets go of everything that grows with use. */
    void rest();
    /** Destroys the filter. */
    void destroy();

  private:
    void answer(const std::string& event, bool obeys);
    void dropGivenUp();
    void forgetInside();

    const bool is_active_;
    HostCounts& counts_;
    FilterModel model_;                       // of an inactive filter
    std::deque<FrameNote> inside_;            // oldest first
    std::unique_ptr<Vorlin::IQFFrame> last_;  // that came out
    std::unique_ptr<Vorlin::IAudioFilter> filter_;
    const Vorlin::ITimedFilter* timing_;
};

}  // namespace test
