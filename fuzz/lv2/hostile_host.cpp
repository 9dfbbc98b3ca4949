#include "hostile_host.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

#include "support/promise.h"

namespace fuzz {

HostileFeatures::HostileFeatures(ByteStream& stream) {
    const int offered = stream.byte();
    manner_ = static_cast<Manner>(stream.inRange(0, kManners - 1));
    has_list_ = (offered & 1) == 0;
    if ((offered & 2) != 0) features_.push_back({LV2_WORKER__schedule, &schedule_});
    if ((offered & 4) != 0) features_.push_back({LV2_LOG__log, &log_});
    if ((offered & 8) != 0) features_.push_back({LV2_URID__map, &map_});
    if ((offered & 16) != 0) features_.push_back({"urn:fuzz:unknown", nullptr});
    if ((offered & 32) != 0) features_.push_back({nullptr, &map_});
    if ((offered & 64) != 0) features_.push_back({LV2_WORKER__schedule, nullptr});
    if ((offered & 128) != 0) std::reverse(features_.begin(), features_.end());
    for (const LV2_Feature& feature : features_) list_.push_back(&feature);
    list_.push_back(nullptr);
}

void HostileFeatures::serve(LV2_Handle instance, const LV2_Worker_Interface* worker) {
    instance_ = instance;
    worker_ = worker;
}

void HostileFeatures::changeManner(ByteStream& stream) {
    manner_ = static_cast<Manner>(stream.inRange(0, kManners - 1));
}

void HostileFeatures::work(ByteStream& stream) {
    if (worker_ == nullptr) return;
    const int kind = stream.byte();
    if (kind >= 0xE0) {
        const auto data = stream.bytes(static_cast<std::size_t>(kind & 31));
        worker_->work(instance_, respond, this, static_cast<std::uint32_t>(data.size()),
                      data.empty() ? nullptr : data.data());
    } else if (kind >= 0xD0) {
        messages_.clear();
    } else if (!messages_.empty()) {
        const std::vector<std::uint8_t> message = messages_.front();
        messages_.erase(messages_.begin());
        const auto size = static_cast<std::uint32_t>(message.size());
        require(worker_->work(instance_, respond, this, size, message.data()) == LV2_WORKER_SUCCESS,
                "the plug-in knows its own messages");
    }
}

LV2_Worker_Status HostileFeatures::schedule(LV2_Worker_Schedule_Handle handle, std::uint32_t size,
                                            const void* data) {
    auto& host = *static_cast<HostileFeatures*>(handle);
    if (host.manner_ == kRefused || host.instance_ == nullptr) return LV2_WORKER_ERR_NO_SPACE;
    if (host.manner_ == kAtOnce) return host.worker_->work(host.instance_, respond, handle, size, data);
    const auto* const bytes = static_cast<const std::uint8_t*>(data);
    if (host.messages_.size() < 64) host.messages_.emplace_back(bytes, bytes + size);
    return LV2_WORKER_SUCCESS;
}

LV2_Worker_Status HostileFeatures::respond(LV2_Worker_Respond_Handle /*handle*/, std::uint32_t /*size*/,
                                           const void* /*data*/) {
    return LV2_WORKER_SUCCESS;
}

LV2_URID HostileFeatures::map(LV2_URID_Map_Handle /*handle*/, const char* uri) {
    require(uri != nullptr, "a URI is a text");
    return 7;
}

int HostileFeatures::print(LV2_Log_Handle handle, LV2_URID kind, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = vprint(handle, kind, format, arguments);
    va_end(arguments);
    return length;
}

int HostileFeatures::vprint(LV2_Log_Handle /*handle*/, LV2_URID kind, const char* format, va_list arguments) {
    require(kind == 7, "a line has a kind that the host knows");
    char line[512];
    return std::vsnprintf(line, sizeof line, format, arguments);
}

}  // namespace fuzz
