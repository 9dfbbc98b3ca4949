#pragma once

#include <map>
#include <mutex>
#include <string>

#include "vorlin/api.h"

namespace Vorlin {

/** Properties of the player that any component may read. Any thread may call. */
class VORLIN_API globalSettings {
  public:
    static globalSettings& GetInstance();

    /** The value of a property; empty when it was never set. */
    std::string getProperty(const std::string& name) const;
    void setProperty(const std::string& name, const std::string& value);

  private:
    globalSettings() = default;

    mutable std::mutex mMutex;
    std::map<std::string, std::string> mProperties;
};

}  // namespace Vorlin
