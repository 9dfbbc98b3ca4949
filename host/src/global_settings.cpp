#include "vorlin/global_settings.h"

namespace Vorlin {

globalSettings& globalSettings::GetInstance() {
    // The object is never destroyed, because a filter may use it until the very end of the program.
    static globalSettings& instance = *new globalSettings;
    return instance;
}

std::string globalSettings::getProperty(const std::string& name) const {
    const std::lock_guard lock(mMutex);
    const auto found = mProperties.find(name);
    return found == mProperties.end() ? std::string() : found->second;
}

void globalSettings::setProperty(const std::string& name, const std::string& value) {
    const std::lock_guard lock(mMutex);
    mProperties[name] = value;
}

}  // namespace Vorlin
