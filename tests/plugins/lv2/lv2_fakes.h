// These are the features that a host offers a plug-in, for tests: a worker and a log.
#pragma once

#include <lv2/core/lv2.h>
#include <lv2/log/log.h>
#include <lv2/urid/urid.h>
#include <lv2/worker/worker.h>

#include <array>
#include <cstdarg>
#include <cstdint>
#include <string>
#include <vector>

#include "sonivex/export.h"

namespace test {

/** A host's worker whose messages wait until the test runs them. */
class FakeLv2Worker {
  public:
    enum class Manner { kImmediate, kQueued, kRefuses };

    explicit FakeLv2Worker(Manner manner) : manner_(manner) { messages_.reserve(kMostMessages); }
    void become(Manner manner) { manner_ = manner; }
    void serve(LV2_Handle instance, const LV2_Worker_Interface* interface);
    const LV2_Worker_Schedule* schedule() { return &schedule_; }
    std::size_t waiting() const { return messages_.size(); }
    int refusals() const { return refusals_; }
    /** Executes the oldest message. */
    void workOnce();
    void workAll();
    /** Loses all messages. */
    void dropAll() { messages_.clear(); }

  private:
    static LV2_Worker_Status scheduleWork(LV2_Worker_Schedule_Handle handle, std::uint32_t size,
                                          const void* data);

    Manner manner_;
    int refusals_ = 0;
    LV2_Handle instance_ = nullptr;
    const LV2_Worker_Interface* interface_ = nullptr;
    // Like a host's, the queue has room from the beginning.
    static constexpr std::size_t kMostMessages = 64;
    static constexpr std::size_t kMostBytes = 64;
    struct Message {
        std::array<unsigned char, kMostBytes> bytes;
        std::uint32_t size;
    };
    std::vector<Message> messages_;
    LV2_Worker_Schedule schedule_ = {this, scheduleWork};
};

/** A host's log, which keeps the lines. */
class FakeLv2Log {
  public:
    std::vector<std::string> lines;
    LV2_Log_Log* log() { return &log_; }
    LV2_URID_Map* map() { return &map_; }

  private:
    static int print(LV2_Log_Handle handle, LV2_URID kind, const char* format, ...)
        SONIVEX_PRINTF_FORMAT(3, 4);
    static int vprint(LV2_Log_Handle handle, LV2_URID kind, const char* format, va_list arguments)
        SONIVEX_PRINTF_FORMAT(3, 0);
    static LV2_URID number(LV2_URID_Map_Handle handle, const char* uri);

    std::vector<std::string> uris_;
    LV2_Log_Log log_ = {this, print, vprint};
    LV2_URID_Map map_ = {this, number};
};

}  // namespace test
