#include "damaged_inputs.h"

#include <algorithm>

#include "failure.h"

namespace sonivex_tool {

bool isAnyDamaged(const std::vector<MeasuredInput>& inputs) {
    return std::any_of(inputs.begin(), inputs.end(),
                       [](const MeasuredInput& input) { return input.damage.isDamaged(); });
}

void failIfDamaged(const std::vector<MeasuredInput>& inputs) {
    std::string line;
    for (const MeasuredInput& input : inputs) {
        if (!input.damage.isDamaged()) continue;
        line += (line.empty() ? "" : "; ") + damageSentence(input.path, input.damage);
    }
    if (!line.empty()) throw Failure(ExitCode::InputDamaged, line + "; the rest was measured");
}

}  // namespace sonivex_tool
