#pragma once

#include <memory>
#include <string>

#include "vorlin/api.h"

namespace Vorlin {

/** A filter library, loaded while this object lives. Hold it longer than any clone of the library's filters.
 */
class VORLIN_API Plugin {
  public:
    /** Load `path` as dlopen understands it: a name without a slash is searched for on the system's path.
     *  @return null with one line in `error` when that fails. */
    static std::shared_ptr<Plugin> load(const std::string& path, std::string& error);

    Plugin(const Plugin&) = delete;
    Plugin& operator=(const Plugin&) = delete;
    ~Plugin();

    /** Whether the library exports `name`. */
    bool exports(const char* name) const;

    /** Where the library has what it exports as `name`, while this object lives; null if it has no such. */
    void* symbol(const char* name) const;

  private:
    explicit Plugin(void* handle) : mHandle(handle) {}

    void* mHandle;
};

}  // namespace Vorlin
