// An effect under test behind its C interface. The subclasses SurroundEffect, NormalizerEffect and
// DialogueEffect create the handle; this class owns it and makes the calls:
//
//     test::SurroundEffect surround(6, 1);                        // creates the effect
//     const Pcm out = surround.process(in);                       // one call
//     const Pcm out = surround.process(in, {240, 100, 1});        // calls of these sizes, in frames
//     const Pcm out = surround.processInCallsOf(240, in);         // whole calls of one size
//     aem_ProcessSurround(surround.handle(), nullptr, out, 240);  // a call of the test's own
//
// Each call reads its input from memory of exactly its size, so that a sanitizer reports every read beyond
// it, and writes its output between guards. The test fails if a guard changes, or if the call does not return
// its number of output samples.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "support/effects/call_sizes.h"
#include "support/memory/guarded_block.h"
#include "support/signals/signals.h"

namespace test {

class Effect {
  public:
    /** The handle that the C functions take; null if the creation failed. */
    void* handle() const { return handle_.get(); }

    /** Processes interleaved input in calls of these sizes, in frames. Input beyond their sum is not
     *  processed. */
    Pcm process(const Pcm& in, const std::vector<int>& call_sizes) {
        Pcm out;
        std::size_t done = 0;
        for (const int frames : call_sizes) {
            const std::size_t samples = static_cast<std::size_t>(frames) * in_width_;
            if (done + samples > in.size()) {
                ADD_FAILURE() << "the calls need more than the " << in.size() << " samples of the input";
                break;
            }
            const auto first = in.begin() + static_cast<std::ptrdiff_t>(done);
            processCall(Pcm(first, first + static_cast<std::ptrdiff_t>(samples)), frames, out);
            done += samples;
        }
        return out;
    }

    /** Processes interleaved input, which holds whole frames, in one call. */
    Pcm process(const Pcm& in) {
        EXPECT_EQ(in.size() % in_width_, 0U) << "the input ends within a frame";
        return process(in, {static_cast<int>(in.size() / in_width_)});
    }

    /** Processes interleaved input in calls of `frames` each. The rest of the input after the last whole call
     *  is not processed. */
    Pcm processInCallsOf(int frames, const Pcm& in) {
        return process(in, callsOf(frames, in.size() / in_width_));
    }

  protected:
    using Release = void (*)(void*);

    /** @param handle    the new effect's handle, which the object owns; null fails the test
     *  @param release   frees the handle
     *  @param in_width  samples in a frame of the input
     *  @param out_width samples in a frame of the output */
    Effect(void* handle, Release release, std::size_t in_width, std::size_t out_width)
        : handle_(handle, release), in_width_(in_width), out_width_(out_width) {
        EXPECT_NE(handle, nullptr) << "the effect was not created";
    }
    Effect(Effect&&) = default;
    ~Effect() = default;

  private:
    /** Makes one call of the C function and returns its result. */
    virtual int call(const short* in, short* out, int frames) = 0;

    void processCall(const Pcm& in, int frames, Pcm& all) {
        const std::size_t samples = static_cast<std::size_t>(frames) * out_width_;
        GuardedBlock out(samples);
        EXPECT_EQ(call(in.data(), out.data(), frames), static_cast<int>(samples));
        EXPECT_TRUE(out.guardsAreWhole()) << "the effect wrote outside its output";
        all.insert(all.end(), out.data(), out.data() + samples);
    }

    std::unique_ptr<void, Release> handle_;
    std::size_t in_width_;
    std::size_t out_width_;
};

}  // namespace test
