#pragma once

#include <span>

#include "convolve_reverb.h"

/** What a ConvolveReverb holds. */
class ConvolveReverbInspector {
  public:
    using Responses = std::span<const ConvolveReverb::Response>;

    explicit ConvolveReverbInspector(ConvolveReverb& reverb) : reverb_(reverb) {}

    int channels() const { return reverb_.channels; }
    std::uint64_t headBlockSize() const { return reverb_.headBlockSize; }
    std::uint64_t tailBlockSize() const { return reverb_.tailBlockSize; }
    IRAgent& agent(std::size_t number) { return reverb_.agents.at(number); }
    bool isInitialised(std::size_t number) const { return reverb_.responseOfAgent.at(number) != nullptr; }
    std::size_t workFrames() const { return reverb_.agentOut.size(); }

    Responses bingo2() const { return reverb_.irBingo2; }
    Responses bingo51() const { return reverb_.irBingo51; }
    Responses bingo71() const { return reverb_.irBingo71; }
    Responses audio() const { return reverb_.irAudio; }
    Responses surround2(int mode) const {
        return mode == 1
                   ? Responses(reverb_.irSurround2Mode1)
                   : (mode == 2 ? Responses(reverb_.irSurround2Mode2) : Responses(reverb_.irSurround2Mode3));
    }
    Responses surround51(int mode) const {
        return mode == 1 ? Responses(reverb_.irSurround51Mode1)
                         : (mode == 2 ? Responses(reverb_.irSurround51Mode2)
                                      : Responses(reverb_.irSurround51Mode3));
    }
    Responses surround71(int mode) const {
        return mode == 1 ? Responses(reverb_.irSurround71Mode1)
                         : (mode == 2 ? Responses(reverb_.irSurround71Mode2)
                                      : Responses(reverb_.irSurround71Mode3));
    }

    /** Every set of responses. */
    std::vector<Responses> all() const {
        std::vector<Responses> sets = {bingo2(), bingo51(), bingo71(), audio()};
        for (const int mode : {1, 2, 3}) {
            sets.push_back(surround2(mode));
            sets.push_back(surround51(mode));
            sets.push_back(surround71(mode));
        }
        return sets;
    }

  private:
    ConvolveReverb& reverb_;
};
