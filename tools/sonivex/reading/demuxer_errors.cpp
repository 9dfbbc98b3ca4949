#include "demuxer_errors.h"

#include <libavutil/log.h>

#include <cstdarg>
#include <cstring>
#include <map>
#include <mutex>

namespace sonivex_tool {
namespace {

// libavutil has one log for the whole program, which any thread may call.
struct Registry {
    std::mutex mutex;
    std::map<const void*, uint64_t> counts;
};

Registry& registry() {
    static Registry the_registry;
    return the_registry;
}

// The demuxers log most faults as errors. These two are sure signs, too, although they have lower levels: a
// packet that is marked as broken or breaks off, and lost packets of MPEG transport streams.
bool isSignOfDamage(int level, const char* format) {
    return level <= AV_LOG_ERROR || std::strncmp(format, "Packet corrupt", 14) == 0 ||
           std::strncmp(format, "Continuity check failed", 23) == 0;
}

void countAndLog(void* subject, int level, const char* format, va_list arguments) {
    if (isSignOfDamage(level, format)) {
        const std::lock_guard lock(registry().mutex);
        const auto found = registry().counts.find(subject);
        if (found != registry().counts.end()) ++found->second;
    }
    av_log_default_callback(subject, level, format, arguments);
}

}  // namespace

DemuxerErrors::DemuxerErrors(const AVFormatContext* container) : container_(container) {
    const std::lock_guard lock(registry().mutex);
    registry().counts[container] = 0;
    av_log_set_callback(countAndLog);
}

DemuxerErrors::~DemuxerErrors() {
    const std::lock_guard lock(registry().mutex);
    registry().counts.erase(container_);
}

uint64_t DemuxerErrors::count() const {
    const std::lock_guard lock(registry().mutex);
    return registry().counts.at(container_);
}

}  // namespace sonivex_tool
