// Lines that a logger writes while an object lives, kept for the test. One subclass per logger says where the
// lines come from: EffectLogCapture (effect_log_capture.h) and HostLogCapture (host_log_capture.h).
#pragma once

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace test {

/** Collects lines. Any thread may log, and any may ask, at any time. */
class LogCapture {
  public:
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    /** Returns the lines up to now, in their order. */
    std::vector<std::string> lines() const {
        const std::lock_guard lock(store_->mutex);
        return store_->lines;
    }
    /** Returns how many lines equal `line`. */
    int count(const std::string& line) const {
        return countIf([&line](const std::string& each) { return each == line; });
    }
    /** Returns how many lines contain `part`. */
    int countContaining(const std::string& part) const {
        return countIf([&part](const std::string& each) { return each.find(part) != std::string::npos; });
    }

  protected:
    struct Store {
        void add(std::string line) {
            const std::lock_guard lock(mutex);
            lines.push_back(std::move(line));
        }
        std::mutex mutex;
        std::vector<std::string> lines;
    };

    LogCapture() = default;
    ~LogCapture() = default;

    /** A logger keeps a share of the store, for a thread that is inside the logger when the capture ends. */
    const std::shared_ptr<Store>& store() const { return store_; }

  private:
    template <typename Predicate>
    int countIf(Predicate is_counted) const {
        const std::lock_guard lock(store_->mutex);
        return static_cast<int>(std::count_if(store_->lines.begin(), store_->lines.end(), is_counted));
    }

    const std::shared_ptr<Store> store_ = std::make_shared<Store>();
};

}  // namespace test
