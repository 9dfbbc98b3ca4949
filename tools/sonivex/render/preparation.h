#pragma once

#include <memory>
#include <string>
#include <vector>

#include "audio_source.h"
#include "effect_pass.h"
#include "output_plan.h"
#include "render_settings.h"

namespace sonivex_tool {

/** Everything that is decided about a render before its output is opened: the stream that is read, its
 *  conversion, the filters, and the streams and encoder of the output. */
class Preparation {
  public:
    /** Checks the settings, opens the input and makes the filters. Writes nothing.
     *  @param outputs as for EffectPass
     *  @throw Failure, std::bad_alloc */
    Preparation(const RenderSettings& settings, const std::shared_ptr<Vorlin::Plugin>& plugin,
                PassOutputs outputs);

    AudioSource& source() { return source_; }
    EffectPass& pass() { return pass_; }
    const OutputPlan& output() const { return output_; }
    /** Returns where the sound begins on the output's clock, in seconds. An audio file begins with silence
     *  instead, so there it is 0. */
    double audioStart_s() const;
    /** Returns what the user should know before the render, one line each, but for the notes of the output's
     *  plan. */
    std::vector<std::string> notes() const;

  private:
    AudioSource source_;
    EffectPass pass_;
    OutputPlan output_;
    std::string path_;
};

/** Returns the names of the effects as the command line takes them: "dialogue,normalizer". */
std::string namesOf(const std::vector<const Effect*>& chain);

/** Describes, for people, what a render would do: several lines, the last one terminated. */
std::string describeText(const Preparation& preparation, const RenderSettings& settings);
/** The same for programs: one JSON object on one terminated line. */
std::string describeJson(const Preparation& preparation, const RenderSettings& settings);

}  // namespace sonivex_tool
