// The optional features of a host that the plug-ins use: a worker and a log. They need neither.
#pragma once

#include <lv2/core/lv2.h>
#include <lv2/log/log.h>
#include <lv2/urid/urid.h>
#include <lv2/worker/worker.h>

namespace sonivex_lv2 {

/** Features of one host; they belong to the host and outlive the plug-in's instance. */
class HostFeatures {
  public:
    /** @param features null-terminated list, or null. [any] real-time safe */
    explicit HostFeatures(const LV2_Feature* const* features);

    /** Returns the host's worker, or null. [any] real-time safe */
    const LV2_Worker_Schedule* worker() const { return worker_; }

    /** Tells the host's user of a failure: in the host's log, else on standard error.
     *  @param subject,reason texts that make a line together.
     *  [any, concurrent] not real-time safe (may print) */
    void logError(const char* subject, const char* reason) const;

  private:
    const LV2_Worker_Schedule* worker_ = nullptr;
    LV2_Log_Log* log_ = nullptr;
    LV2_URID error_kind_ = 0;
};

}  // namespace sonivex_lv2
