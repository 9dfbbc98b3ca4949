// Foretells what a filter without a worker does with each frame.
#pragma once

#include <cstdint>
#include <deque>
#include <optional>
#include <string>

#include "models/option_model.h"
#include "random_host/random_frames.h"

namespace test {

/** How a frame leaves a filter, or left it. */
enum class Way { kUntouched, kProcessed, kGivenUp };

/** How a processed frame comes out. Zero channels and format -1 stand for "as it pleases". */
struct Shape {
    int channels = 0;
    int format = -1;
};

/** Follows a filter that works inside `push`, and foretells the fate of every frame from the interface's
 *  words.
 *
 *      options       as OptionModel reads them: which effect processes which stream
 *      push accepts  while at most 1 frame waits for the work and at most 2 wait for `pull`
 *      work          takes frames while at most 1 waits for `pull`, up to one that is not processed
 *      untouched     while the filter is invalid, for no effect, a stream that the effect does not process,
 *                    no frame, and a frame without samples
 *      given up      a frame that does not hold what it describes, and one of another stream than the graph
 *      format        that of the first frame after a flush, or 16-bit if that is none
 *
 *  The model decides nothing about layouts that libavfilter may refuse. It looks at what the filter did, and
 *  goes on from there. */
class FilterModel {
  public:
    /** A frame that waits for `pull`. */
    struct Finished {
        Way way = Way::kUntouched;
        Shape shape;
    };

    void setInvalid(bool is_invalid) { is_invalid_ = is_invalid; }
    /** Takes a text for FILTER_OPTION. @return whether the filter takes it. */
    bool setOptions(const std::string& text) { return options_.set(text); }
    /** @return the effect that processes frames of this description, unless the filter is invalid. */
    ModelEffect effectFor(const Vorlin::IQFFrame::audioInfo& info) const {
        return options_.effectFor(info.channels, info.sample_rate);
    }
    /** Forgets the frames and the stream. */
    void flush();

    /** @return whether the next push is accepted. */
    bool accepts() const { return waiting_.size() <= 1 && finished_.size() <= 2; }
    /** @return whether the next pull gives a frame. */
    bool hasFinished() const { return !finished_.empty(); }

    /** Adds a frame that the filter took. `note` must live until the frame has left. */
    void take(const FrameNote& note) { waiting_.push_back(&note); }
    /** Follows the work of one call of `push`, which is over.
     *  @throws BrokenPromise if a frame did not go the foretold way. */
    void work();
    /** Removes the frame that was pulled. */
    Finished pull();

  private:
    struct Stream {
        int format;
        int channels;
        int rate_hz;
        std::uint64_t mask;
        bool operator==(const Stream&) const = default;
    };
    enum class Graph { kNone, kKnown, kUnclear };

    Way follow(const FrameNote& note, ModelEffect effect);
    Way followStart(const FrameNote& note, bool was_given_up);
    static Stream streamOf(const FrameNote& note);

    OptionModel options_;
    bool is_invalid_ = true;
    std::deque<const FrameNote*> waiting_;
    std::deque<Finished> finished_;
    Graph graph_ = Graph::kNone;
    Stream stream_{};                 // of the graph, if it is known
    int format_ = -1;                 // to deliver
    std::optional<int> last_format_;  // of the stream of the last graph since the flush
};

}  // namespace test
