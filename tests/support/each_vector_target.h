// Runs a check with every set of vector instructions that this machine has, the smallest too.
#pragma once

#include "vector_targets.h"
// vector_targets.h comes first.
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <cstdint>

namespace test {

/** Which kernels HWY_DYNAMIC_DISPATCH takes.
 *  @param targets bits of Highway, or 0: the best of the machine. */
inline void dispatchTo(std::int64_t targets) {
    hwy::SetSupportedTargetsForTest(targets);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

/** Calls `check` for each; not from two threads at once. */
template <typename Check>
void forEachVectorTarget(Check check) {
    dispatchTo(0);
    for (const std::int64_t target : hwy::SupportedAndGeneratedTargets()) {
        SCOPED_TRACE(hwy::TargetName(target));
        dispatchTo(target);
        check();
    }
    dispatchTo(0);
}

}  // namespace test
