#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "vorlin/plugin.h"

namespace sonivex_tool {

constexpr int kBenchRateHz = 48000;

/** An effect in one of its shapes. */
struct BenchCase {
    std::string effect;  // as on the command line
    std::string type;    // of surround, as on the command line; else empty
    int channels;        // of the input
    int call_frames;     // samples per channel in each call: some whole blocks, about 10 ms
};

/** Every effect in every shape that differs in cost, or only those of the effect of that name. */
std::vector<BenchCase> benchCases(const std::string& effect);

/** An effect made through a plug-in's C functions, as a host without the filter would. */
class BenchEffect {
  public:
    /** @param plugin must live longer.
     *  @throw Failure: the plug-in lacks a function that is needed (EffectMissing), or makes no handle
     * (FilterFailed). */
    BenchEffect(const Vorlin::Plugin& plugin, const BenchCase& shape);

    /** Process calls of call_frames, one after the other.
     *  @param in [frames][channels]; frames beyond the last whole call are left out.
     *  @throw Failure (FilterFailed) when a call is not answered in full. */
    void process(const std::vector<int16_t>& in);

  private:
    BenchCase shape_;
    std::unique_ptr<void, void (*)(void*)> handle_;
    std::function<int(const short* in, short* out)> call_;
    std::vector<short> out_;
    size_t out_samples_;  // that a call has to give
};

/** The vector instructions that a plug-in uses, for people; empty if it does not tell. */
std::string vectorTargetOf(const Vorlin::Plugin& plugin);

}  // namespace sonivex_tool
