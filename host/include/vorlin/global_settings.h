#pragma once

#include <map>
#include <mutex>
#include <string>

#include "vorlin/api.h"

namespace Vorlin {

/** Properties of the player, which any component may read. */
class VORLIN_API globalSettings {
  public:
    /** @return the only object of this class, which lives until the end of the program.
     *  [any, concurrent] not real-time safe: the first call allocates */
    static globalSettings& GetInstance();

    /** @return the value of a property; empty if it was never set.
     *  [any, concurrent] not real-time safe: takes a lock, allocates */
    std::string getProperty(const std::string& name) const;
    /** Sets a property, or replaces its value. [any, concurrent] not real-time safe: takes a lock,
     *  allocates */
    void setProperty(const std::string& name, const std::string& value);

  private:
    globalSettings() = default;

    mutable std::mutex mMutex;
    std::map<std::string, std::string> mProperties;
};

}  // namespace Vorlin
