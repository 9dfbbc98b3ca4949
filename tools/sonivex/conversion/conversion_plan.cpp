#include "conversion_plan.h"

#include "failure.h"

namespace sonivex_tool {

ConversionPlan planConversion(const AudioSpec& input, const std::vector<const Effect*>& chain,
                              const ConversionSettings& /*settings*/) {
    const std::string reason = whyUnsupported(*chain.front(), input.channels(), input.rate_hz);
    if (!reason.empty()) throw Failure(ExitCode::UnsupportedAudio, "cannot render the audio: " + reason);
    return {input, {}};
}

}  // namespace sonivex_tool
