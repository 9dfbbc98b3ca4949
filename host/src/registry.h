#pragma once

#include <mutex>

namespace Vorlin {

/** Held while a prototype enters the registry, leaves it, is asked or is cloned.
 *
 *  Plugin holds it too while it loads and unloads a library: a prototype leaves only at the end of its
 *  destructor, and nobody may ask a half-destroyed one meanwhile. Recursive, because loading a library enters
 *  its prototype, and a clone that fails half-way destroys its filterPrototype part. */
std::recursive_mutex& registryMutex();

}  // namespace Vorlin
