// A host that uses filters at random, and checks after each of its calls what the interface promises.
//
//     const DropLog log;
//     SeededBytes bytes(7);
//     RandomHost host(bytes, {}, log);
//     for (int i = 0; i < 1000; ++i) host.step();
//     host.finish();
//
// A broken promise throws BrokenPromise. All calls of a host come from one thread, as the interface of a
// filter demands; several hosts may run on threads of their own.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "random_host/byte_source.h"
#include "random_host/frame_fate.h"
#include "random_host/hosted_filter.h"
#include "random_host/random_frames.h"

namespace test {

/** The habits of a random host. */
struct Habits {
    enum class Workers { kNever, kSometimes, kAlways };

    Workers workers = Workers::kNever;  // whether its filters are active
    // A hostile host pushes odd frames, changes the stream without a flush and sends damaged options. A kind
    // one plays: it flushes when the stream changes, pulls what is ready, and does something else rarely.
    bool is_hostile = true;
    std::uint32_t most_filters = 3;
    int longest_frames = 1024;  // of a frame
    bool may_dump = false;      // whether options switch the dump on; damaged ones may do so in any case
    int longest_wait_us = 0;    // with which it lets workers work
};

class RandomHost {
  public:
    /** @param bytes, log must outlive the host. */
    RandomHost(ByteSource& bytes, const Habits& habits, const DropLog& log);
    ~RandomHost();
    RandomHost(const RandomHost&) = delete;
    RandomHost& operator=(const RandomHost&) = delete;

    /** Makes one call, or a few that belong together. */
    void step();
    /** Flushes the first filter, destroys the others, and checks that nothing is left of any frame. */
    void rest();
    /** Destroys every filter and checks that nothing is left of any frame. */
    void finish();

    /** @return what became of the frames so far. */
    const HostCounts& counts() const { return counts_; }

  private:
    void stepHostile();
    void stepKind();
    void push(RandomFrame made);
    void pushHonest();
    void changeSound(bool flushes);
    void sendOption();
    void sendNumber();
    void listen();
    void callGuard();
    void askAround();
    void dumpForAMoment();
    void checkSum() const;
    void addFilter();
    void removeFilter();
    void wait();
    HostedFilter& current() { return *filters_[current_]; }

    ByteSource& bytes_;
    const Habits habits_;
    const DropLog& log_;
    HostCounts counts_;
    Sound sound_;
    std::size_t current_ = 0;
    std::vector<std::unique_ptr<HostedFilter>> filters_;  // never empty but at the end
};

}  // namespace test
