#include "vorlin/plugin.h"

#include <dlfcn.h>

#include <algorithm>

#include "registry.h"

namespace Vorlin {

std::shared_ptr<Plugin> Plugin::load(const std::string& path, std::string& error) {
    // dlopen treats an empty name as the program itself, and stops at a zero byte.
    if (path.empty() || path.find('\0') != std::string::npos) {
        error = "the name of a library must not be empty or hold a zero byte";
        return nullptr;
    }
    std::shared_ptr<Plugin> plugin(new Plugin(nullptr));
    const std::lock_guard lock(registryMutex());
    plugin->mHandle = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (plugin->mHandle == nullptr) {
        const char* reason = dlerror();
        error = reason != nullptr ? reason : "cannot load " + path;
        std::replace(error.begin(), error.end(), '\n', ' ');
        return nullptr;
    }
    return plugin;
}

Plugin::~Plugin() {
    if (mHandle == nullptr) return;
    const std::lock_guard lock(registryMutex());
    dlclose(mHandle);
}

bool Plugin::exports(const char* name) const {
    return symbol(name) != nullptr;
}

void* Plugin::symbol(const char* name) const {
    return dlsym(mHandle, name);
}

}  // namespace Vorlin
