#include "plugins/lv2/lv2_fakes.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>

namespace test {

void FakeLv2Worker::serve(LV2_Handle instance, const LV2_Worker_Interface* interface) {
    instance_ = instance;
    interface_ = interface;
}

void FakeLv2Worker::workOnce() {
    ASSERT_FALSE(messages_.empty());
    const Message message = messages_.front();
    messages_.erase(messages_.begin());
    const auto respond = [](LV2_Worker_Respond_Handle, std::uint32_t, const void*) {
        return LV2_WORKER_SUCCESS;
    };
    interface_->work(instance_, respond, nullptr, message.size, message.bytes.data());
}

void FakeLv2Worker::workAll() {
    while (!messages_.empty()) workOnce();
}

LV2_Worker_Status FakeLv2Worker::scheduleWork(LV2_Worker_Schedule_Handle handle, std::uint32_t size,
                                              const void* data) {
    auto& worker = *static_cast<FakeLv2Worker*>(handle);
    if (worker.manner_ == Manner::kRefuses) {
        ++worker.refusals_;
        return LV2_WORKER_ERR_NO_SPACE;
    }
    if (size > kMostBytes || worker.messages_.size() == kMostMessages) return LV2_WORKER_ERR_NO_SPACE;
    Message message = {.bytes = {}, .size = size};
    std::memcpy(message.bytes.data(), data, size);
    worker.messages_.push_back(message);
    if (worker.manner_ == Manner::kImmediate) worker.workAll();
    return LV2_WORKER_SUCCESS;
}

int FakeLv2Log::print(LV2_Log_Handle handle, LV2_URID kind, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int length = vprint(handle, kind, format, arguments);
    va_end(arguments);
    return length;
}

int FakeLv2Log::vprint(LV2_Log_Handle handle, LV2_URID kind, const char* format, va_list arguments) {
    auto& log = *static_cast<FakeLv2Log*>(handle);
    std::array<char, 512> text{};
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    const std::string name = kind == 0 || kind > log.uris_.size() ? "no kind" : log.uris_[kind - 1];
    log.lines.push_back(name + " " + text.data());
    return length;
}

LV2_URID FakeLv2Log::number(LV2_URID_Map_Handle handle, const char* uri) {
    auto& uris = static_cast<FakeLv2Log*>(handle)->uris_;
    uris.emplace_back(uri);
    return static_cast<LV2_URID>(uris.size());
}

}  // namespace test
