#pragma once

#include <lv2/core/lv2.h>
#include <lv2/log/log.h>
#include <lv2/urid/urid.h>
#include <lv2/worker/worker.h>

#include <cstdint>
#include <vector>

#include "sonivex/export.h"
#include "support/byte_stream.h"

namespace fuzz {

/** The features of a host that offers some, with holes: entries without a name or data, unknown ones, and a
 *  worker that does its work at once, later, never, or refuses it. */
class HostileFeatures {
  public:
    /** Reads from the stream which features there are. */
    explicit HostileFeatures(ByteStream& stream);
    HostileFeatures(const HostileFeatures&) = delete;
    HostileFeatures& operator=(const HostileFeatures&) = delete;

    /** Returns the list, which ends with null, or null for no list. */
    const LV2_Feature* const* list() const { return has_list_ ? list_.data() : nullptr; }

    /** Tells whose work the messages are. */
    void serve(LV2_Handle instance, const LV2_Worker_Interface* worker);

    /** Changes what becomes of the next messages. */
    void changeManner(ByteStream& stream);

    /** Has the plug-in do the oldest message's work, loses all messages, or sends a message that is none. */
    void work(ByteStream& stream);

  private:
    enum Manner : std::uint8_t { kAtOnce, kLater, kRefused, kManners };

    static LV2_Worker_Status schedule(LV2_Worker_Schedule_Handle handle, std::uint32_t size,
                                      const void* data);
    static LV2_Worker_Status respond(LV2_Worker_Respond_Handle handle, std::uint32_t size, const void* data);
    static LV2_URID map(LV2_URID_Map_Handle handle, const char* uri);
    static int print(LV2_Log_Handle handle, LV2_URID kind, const char* format, ...)
        SONIVEX_PRINTF_FORMAT(3, 4);
    static int vprint(LV2_Log_Handle handle, LV2_URID kind, const char* format, va_list arguments)
        SONIVEX_PRINTF_FORMAT(3, 0);

    Manner manner_ = kAtOnce;
    std::vector<std::vector<std::uint8_t>> messages_;
    LV2_Handle instance_ = nullptr;
    const LV2_Worker_Interface* worker_ = nullptr;
    LV2_Worker_Schedule schedule_ = {this, schedule};
    LV2_URID_Map map_ = {this, map};
    LV2_Log_Log log_ = {this, print, vprint};
    std::vector<LV2_Feature> features_;
    std::vector<const LV2_Feature*> list_;
    bool has_list_ = true;
};

}  // namespace fuzz
