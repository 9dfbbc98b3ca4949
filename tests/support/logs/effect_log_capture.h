#pragma once

#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "sonivex/log_bridge.h"
#include "support/logs/log_capture.h"

namespace test {

/** Collects the effects' log lines in place of the log writer. Objects may be nested; the innermost collects.
 *  Every line must have the length that comes with it. */
class EffectLogCapture : public LogCapture {
  public:
    EffectLogCapture() : store_before_(exchangeTarget(store())), writer_before_(logWriterFun) {
        logWriterFun = &write;
    }
    ~EffectLogCapture() {
        logWriterFun = writer_before_;
        exchangeTarget(store_before_);
    }

  private:
    static void write(const char* line, int length) {
        EXPECT_EQ(std::strlen(line), static_cast<std::size_t>(length));
        if (const auto target = targetNow()) target->add(line);
    }

    // The writer is a plain function, so it finds its store in a global.
    inline static std::mutex target_mutex_;
    inline static std::shared_ptr<Store> target_;

    static std::shared_ptr<Store> targetNow() {
        const std::lock_guard lock(target_mutex_);
        return target_;
    }
    static std::shared_ptr<Store> exchangeTarget(std::shared_ptr<Store> target) {
        const std::lock_guard lock(target_mutex_);
        return std::exchange(target_, std::move(target));
    }

    const std::shared_ptr<Store> store_before_;
    void (*const writer_before_)(const char*, int);
};

}  // namespace test
