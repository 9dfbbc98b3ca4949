#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "vorlin/plugin.h"

namespace sonivex_tool {

/** Sample rate of every measurement, in Hz. */
constexpr int kBenchRateHz = 48000;

/** An effect in one configuration. */
struct BenchCase {
    std::string effect;  // as on the command line
    std::string type;    // surround: its type as on the command line; else empty
    int channels;        // of the input
    int call_frames;     // samples per channel in each call: whole blocks, about 10 ms
};

/** Returns every effect in every configuration that differs in cost.
 *  @param effect name of the only effect to return; empty: all effects */
std::vector<BenchCase> benchCases(const std::string& effect);

/** An effect created through a plug-in's C functions, as a host without the filter would create it. */
class BenchEffect {
  public:
    /** @param plugin must outlive this object.
     *  @throw Failure if the plug-in does not export a function that is needed (EffectMissing), or cannot
     *  create the effect (FilterFailed), or if no effect has the name shape.effect (Internal) */
    BenchEffect(const Vorlin::Plugin& plugin, const BenchCase& shape);

    /** Processes the samples in successive calls of call_frames frames.
     *  @param in interleaved, [frames][channels]; frames after the last whole call are left out
     *  @throw Failure (FilterFailed) if a call does not return all its samples */
    void process(const std::vector<int16_t>& in);

  private:
    BenchCase shape_;
    std::unique_ptr<void, void (*)(void*)> handle_;
    std::function<int(const short* in, short* out)> call_;
    std::vector<short> out_;
    size_t out_samples_;  // samples that each call must return, over all channels
};

/** Returns the name of the vector instructions that a plug-in uses, for people; empty if it does not tell. */
std::string vectorTargetOf(const Vorlin::Plugin& plugin);

}  // namespace sonivex_tool
