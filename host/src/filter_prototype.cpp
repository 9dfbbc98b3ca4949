#include "vorlin/filter_prototype.h"

#include <algorithm>
#include <vector>

#include "registry.h"
#include "vorlin/log.h"

namespace Vorlin {

namespace {

struct Entry {
    const filterPrototype* prototype;
    IAudioFilter* filter;
};

struct Registry {
    std::recursive_mutex mutex;
    std::vector<Entry> entries;  // oldest first
};

// The registry is made at its first use and never destroyed. Libraries enter it while they are loaded and
// leave it while the program ends, in an unknown order.
Registry& registry() {
    static Registry& instance = *new Registry;
    return instance;
}

// The caller holds the registry's mutex. @return null if no prototype supports `name`.
IAudioFilter* findNewest(const std::string& name) {
    constexpr int kNoCodecHint = 0;
    const auto& entries = registry().entries;
    const auto found = std::find_if(entries.rbegin(), entries.rend(), [&](const Entry& entry) {
        return entry.filter->is_supported(name, kNoCodecHint, kNoCodecHint, kNoCodecHint);
    });
    return found == entries.rend() ? nullptr : found->filter;
}

}  // namespace

std::recursive_mutex& registryMutex() {
    return registry().mutex;
}

filterPrototype::~filterPrototype() {
    const std::lock_guard lock(registryMutex());
    std::erase_if(registry().entries, [this](const Entry& entry) { return entry.prototype == this; });
}

void filterPrototype::addPrototype(filterPrototype* prototype) {
    auto* filter = dynamic_cast<IAudioFilter*>(prototype);
    if (filter == nullptr) {
        __log_print(LOG_ERROR, "filterPrototype", "a prototype that is no audio filter was not registered");
        return;
    }
    const std::lock_guard lock(registryMutex());
    registry().entries.push_back({prototype, filter});
}

std::unique_ptr<IAudioFilter> filterPrototype::createFilter(const std::string& name,
                                                            const IQFFrame::audioInfo& src,
                                                            const IQFFrame::audioInfo& dst, bool active) {
    const std::lock_guard lock(registryMutex());
    IAudioFilter* prototype = findNewest(name);
    if (prototype == nullptr) return nullptr;
    return std::unique_ptr<IAudioFilter>(prototype->clone(src, dst, active));
}

bool filterPrototype::isRegistered(const std::string& name) {
    const std::lock_guard lock(registryMutex());
    return findNewest(name) != nullptr;
}

}  // namespace Vorlin
