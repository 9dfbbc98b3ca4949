// The ways in which the soak uses the product. Each lane lives as long as the soak and keeps its filter, its
// player or its effect, so that what grows inside them shows.
#pragma once

#include <cstdint>
#include <memory>

#include "random_host/frame_fate.h"
#include "random_host/hosted_filter.h"

namespace test {

class Lane {
  public:
    Lane() = default;
    Lane(const Lane&) = delete;
    Lane& operator=(const Lane&) = delete;
    virtual ~Lane() = default;

    /** Plays this much more audio and comes to rest: no frame is inside, and what was made on the way is
     *  gone.
     *  @throws BrokenPromise */
    virtual void play(double audio_s) = 0;
    /** Returns what became of all frames so far. Call it while the lane does not play. */
    virtual HostCounts counts() const = 0;
    /** Returns the part of the frames that came out which an effect has processed, 0 to 1. */
    virtual double processedPart() const {
        const HostCounts so_far = counts();
        return so_far.pulled == 0
                   ? 0
                   : static_cast<double>(so_far.processed) / static_cast<double>(so_far.pulled);
    }
};

/** Filters in the hands of a random host that plays. */
std::unique_ptr<Lane> makeFilterLane(std::uint64_t seed, bool has_workers, const DropLog& log);

/** The framework's Player: frames of any length, options, seeks, bypasses and ends of streams. */
std::unique_ptr<Lane> makePlayerLane(std::uint64_t seed);

/** The effects through the interface of the library: streams in blocks of any length. */
std::unique_ptr<Lane> makeLibraryLane(std::uint64_t seed);

}  // namespace test
