#pragma once

#include <mutex>

namespace Vorlin {

/** @return the mutex that is held while a prototype enters the registry, leaves it, is asked for a name or is
 *  cloned. Any thread may call this.
 *
 *  Plugin also holds it while it loads or unloads a library. A prototype leaves the registry only at the end
 *  of its destructor, and no thread may call a half-destroyed prototype before that.
 *
 *  The mutex is recursive, because loading a library enters its prototype, and because a clone whose
 *  constructor fails destroys its filterPrototype part. */
std::recursive_mutex& registryMutex();

}  // namespace Vorlin
