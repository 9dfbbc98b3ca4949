// Runs a check once for each vector instruction set that this machine supports, including the baseline.
#pragma once

#include "vector_targets.h"
// vector_targets.h selects the compiled targets, so it must precede every header of Highway.
#include <gtest/gtest.h>
#include <hwy/targets.h>

#include <cstdint>

namespace test {

/** Selects the kernels that HWY_DYNAMIC_DISPATCH calls.
 *  @param targets Highway's target bits; 0 selects the best target of the machine. */
inline void dispatchTo(std::int64_t targets) {
    hwy::SetSupportedTargetsForTest(targets);
    hwy::GetChosenTarget().Update(hwy::SupportedTargets());
}

/** Calls `check` once per target, then restores the best one. The selection is global: call from one thread
 *  at a time. */
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
