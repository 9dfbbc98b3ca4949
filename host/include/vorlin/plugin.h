#pragma once

#include <memory>
#include <string>

#include "vorlin/api.h"

namespace Vorlin {

/** A filter library, loaded while this object lives. Hold it longer than any clone of the library's
 *  filters. */
class VORLIN_API Plugin {
  public:
    /** Loads a library.
     *  @param path as for dlopen: the system's library path is searched for a name without a slash.
     *  @return null, with one line in `error`, if that fails.
     *  [any, concurrent] not real-time safe: takes a lock, reads the disk, allocates */
    static std::shared_ptr<Plugin> load(const std::string& path, std::string& error);

    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;
    /** Unloads the library, unless someone else holds it. [any] not real-time safe: takes a lock */
    ~Plugin();

    /** @return true if the library exports `name`. [any, concurrent] not real-time safe: takes the loader's
     *  lock */
    bool exports(const char* name) const;

    /** @return the address of the function or variable that the library exports as `name`, valid while this
     *  object lives; null if there is none.
     *  [any, concurrent] not real-time safe: takes the loader's lock */
    void* symbol(const char* name) const;

  private:
    explicit Plugin(void* handle) : mHandle(handle) {}

    void* mHandle;
};

}  // namespace Vorlin
