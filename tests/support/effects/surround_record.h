// The record behind a handle of surround, for tests of the effect's internals.
#pragma once

#include "support/effects/surround_effect.h"
#include "surround_handle.h"

namespace test {

inline SurroundHandle& recordOf(const SurroundEffect& surround) {
    return *static_cast<SurroundHandle*>(surround.handle());
}

}  // namespace test
