#include "host_features.h"

#include <cstdio>
#include <cstring>

namespace sonivex_lv2 {

HostFeatures::HostFeatures(const LV2_Feature* const* features) {
    if (features == nullptr) return;
    LV2_URID_Map* map = nullptr;
    for (; *features != nullptr; ++features) {
        const LV2_Feature& feature = **features;
        if (feature.URI == nullptr || feature.data == nullptr) continue;
        if (std::strcmp(feature.URI, LV2_WORKER__schedule) == 0) {
            worker_ = static_cast<const LV2_Worker_Schedule*>(feature.data);
        } else if (std::strcmp(feature.URI, LV2_LOG__log) == 0) {
            log_ = static_cast<LV2_Log_Log*>(feature.data);
        } else if (std::strcmp(feature.URI, LV2_URID__map) == 0) {
            map = static_cast<LV2_URID_Map*>(feature.data);
        }
    }
    if (map != nullptr) {
        error_kind_ = map->map(map->handle, LV2_LOG__Error);
    } else {
        log_ = nullptr;  // a line without its kind is not allowed
    }
}

void HostFeatures::logError(const char* subject, const char* reason) const {
    if (log_ != nullptr) {
        log_->printf(log_->handle, error_kind_, "sonivex.lv2: %s: %s\n", subject, reason);
    } else {
        std::fprintf(stderr, "sonivex.lv2: %s: %s\n", subject, reason);
    }
}

}  // namespace sonivex_lv2
